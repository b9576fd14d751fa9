#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace base {

// A failure that a user or the data can cause, with the code the host shows beside the message.
// Codes follow the database library's numbering, so that callers can test one code (a missing key)
// and let every other failure travel to the host.
class Error : public std::runtime_error {
public:
    Error(std::int32_t code, const std::string& message) : std::runtime_error(message), m_code(code) {}
    std::int32_t code() const { return m_code; }

private:
    std::int32_t m_code;
};

// Error codes of the system. 0x8004000B is the one code that callers test: a read of a missing key.
namespace codes {
constexpr std::int32_t kMissingKey = static_cast<std::int32_t>(0x8004000B);
constexpr std::int32_t kUnknownFile = static_cast<std::int32_t>(0x80040010);
constexpr std::int32_t kSentence = static_cast<std::int32_t>(0x80040011);
constexpr std::int32_t kStorage = static_cast<std::int32_t>(0x80040012);
constexpr std::int32_t kNotBound = static_cast<std::int32_t>(0x80040013);
constexpr std::int32_t kUnknownRoutine = static_cast<std::int32_t>(0x80040014);
constexpr std::int32_t kBadData = static_cast<std::int32_t>(0x80040015);
constexpr std::int32_t kBusy = static_cast<std::int32_t>(0x80040016);
}  // namespace codes

}  // namespace base
