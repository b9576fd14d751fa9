#pragma once

#include <string>
#include <vector>

// The text that names a PostgreSQL server: a URI ("postgresql://user@host/base?param=value") or a
// libpq keyword string ("host=... dbname=..."). It may carry a password, which no message shows.
namespace mvdb::pg {

// True when the text names a server rather than a file: a URI of scheme postgresql or postgres in any
// case, or a text that begins with a word followed by "=", as a keyword string does.
bool isServerAddress(const std::string& text);

// The text as the client library reads it: the scheme of a URI in lower case, the rest unchanged.
std::string canonicalAddress(const std::string& text);

// Checks the text as the client library would read it, and gives the passwords it carries. A text the
// library refuses is a base::Error that says what is wrong and where, in words of its own: the
// library's message may repeat the text, password included.
std::vector<std::string> checkAddress(const std::string& text);

// The schema names of a search_path setting, in order, as the server reads them: a quoted name kept
// exactly ("" standing for one "), an unquoted one in lower case, each cut to the server's 63 bytes.
// "$user" is left for the caller to resolve. A setting the server would refuse gives what it could read.
std::vector<std::string> searchPathSchemas(const std::string& setting);

// The message with every occurrence of each secret replaced by "****".
std::string masked(std::string message, const std::vector<std::string>& secrets);

}  // namespace mvdb::pg
