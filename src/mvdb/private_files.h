#pragma once

#include <string>

// Patients' data stays with the account that runs the service: what Zandorel creates on disk is for its
// owner only, whatever the umask says.
namespace mvdb {

// Creates `path` as an empty file readable and writable by its owner only (0600), before a database
// engine fills it; the engine's side files (journal, write-ahead log, shared memory) take the mode of
// their database. A file that exists already is left as it is. Fails with base::Error (kStorage)
// naming the path and the cause.
void createPrivateFile(const std::string& path);

// Creates the folder `path` and every missing folder above it, each for its owner only (0700). Folders
// that exist already are left as they are. Fails with base::Error (kStorage) naming the folder.
void createPrivateFolders(const std::string& path);

// The folder that Zandorel keeps as its own (the default one of its database): made as
// createPrivateFolders does, and when it exists already with rights for others, made owner-only. The
// folders above it are left as they are. Fails with base::Error (kStorage) naming the folder.
void makeOwnFolderPrivate(const std::string& path);

}  // namespace mvdb
