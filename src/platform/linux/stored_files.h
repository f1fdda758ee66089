#pragma once

#include <string>

// The files that this process has stored for the time of a request.  They are removed
// when the process ends, by a signal too, but not by processes that it starts.
namespace ORBO::StoredFiles {

// At most so many.
inline constexpr int kMost = 256;

// Puts `path` on the list, before the file is made: a signal may come in between.
// False where the list is full or there is no memory.
bool Add(const std::string& path);

bool Has(const std::string& path);

// Removes one file, or all, from the disk and from the list.
void Remove(const std::string& path);
void RemoveAll();

}  // namespace ORBO::StoredFiles
