#pragma once

#include <memory>
#include <string>

namespace control {

// The rights element of one function: it answers the user's level; 2 means the user may validate.
class ElementDroits {
public:
    virtual ~ElementDroits() = default;
    virtual int niveau() const = 0;
};

// The rights object the host hands over: it gives the element of a function by name.
class DroitsUtilisateur {
public:
    virtual ~DroitsUtilisateur() = default;
    virtual std::shared_ptr<ElementDroits> element(const std::string& fonction) const = 0;
};

// Rights of one fixed level for every function, as `--rights N` gives.
class DroitsFixes : public DroitsUtilisateur {
public:
    explicit DroitsFixes(int niveau) : m_niveau(niveau) {}
    std::shared_ptr<ElementDroits> element(const std::string&) const override;

private:
    int m_niveau;
};

}  // namespace control
