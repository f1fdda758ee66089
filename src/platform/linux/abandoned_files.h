#pragma once

#include <string>

// Files that must not outlive their process.  One that is killed (SIGKILL, no memory
// left, a loss of power) cannot remove them; who comes after it does.
namespace ORBO {

// A new name for such a file of this process: it says whose it is, and nobody can
// guess it.
std::string TemporaryFileName();

// Removes from `directory` the files of such names whose process is gone.  Nothing but
// regular files of this process's user is removed, whoever else may write there, and
// no link is followed.  What was made where process ids mean something else (before a
// restart, in another container, by another host) goes a day after its last change.
// Of a directory with very many files not all are looked at.
void RemoveAbandonedFiles(const std::string& directory);

}  // namespace ORBO
