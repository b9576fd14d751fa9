#include "mvdb/private_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "base/error.h"

namespace mvdb {
namespace {

[[noreturn]] void fail(const std::string& what, const std::string& path, int cause) {
    throw base::Error(base::codes::kStorage, what + " " + path + " : " + std::strerror(cause));
}

}  // namespace

void createPrivateFile(const std::string& path) {
    // O_EXCL: a file made meanwhile by someone else is theirs, and keeps its mode.
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (fd < 0) {
        if (errno == EEXIST) return;
        fail("Création impossible du fichier", path, errno);
    }
    // The umask may have taken bits away from the mode asked for; the owner needs both.
    const int changed = ::fchmod(fd, S_IRUSR | S_IWUSR);
    const int cause = errno;
    ::close(fd);
    if (changed != 0) fail("Droits impossibles à fixer sur", path, cause);
}

void createPrivateFolders(const std::string& path) {
    const std::filesystem::path folder(path);
    if (folder.empty()) return;
    std::error_code ignored;
    if (std::filesystem::is_directory(folder, ignored)) return;
    if (folder.has_parent_path() && folder.parent_path() != folder)
        createPrivateFolders(folder.parent_path());
    if (::mkdir(path.c_str(), S_IRWXU) != 0) {
        if (errno == EEXIST && std::filesystem::is_directory(folder, ignored)) return;
        fail("Création impossible du dossier", path, errno);
    }
    if (::chmod(path.c_str(), S_IRWXU) != 0) fail("Droits impossibles à fixer sur", path, errno);
}

void makeOwnFolderPrivate(const std::string& path) {
    createPrivateFolders(path);
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) fail("Droits illisibles sur", path, errno);
    if ((st.st_mode & (S_IRWXG | S_IRWXO)) == 0) return;
    if (::chmod(path.c_str(), (st.st_mode & S_IRWXU) | S_IRWXU) != 0)
        fail("Droits impossibles à fixer sur", path, errno);
}

}  // namespace mvdb
