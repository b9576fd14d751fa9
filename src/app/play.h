#pragma once

#include <iosfwd>
#include <string>

namespace app {

struct PlayOptions {
    std::string db;
    std::string today;  // "dd/mm/yyyy", empty for the computer's date
};

// Plays a scenario script on the screen, headless, one command per line ("#" starts a comment; texts
// may be double-quoted). Dumps go to `out`, messages to `err`. Returns the exit code: 0 success, 1 when
// a failure of the system reached the host (the script goes on, as the screen does), 2 for a line the
// runner cannot read (with its number), 3 for a message box or modal form the script did not answer.
int runPlay(const PlayOptions& options, std::istream& script, std::ostream& out, std::ostream& err);

}  // namespace app
