// Small files that other processes read.
#pragma once

#include <string>

namespace qv_service {

/// Throws StartError with a sentence about `purpose` when a file of that path could not be written.
void RequireWritable(const std::string& path, const std::string& purpose);

/// Throws StartError with a sentence about `purpose` when no file could be made in the folder.
void RequireWritableFolder(const std::string& folder, const std::string& purpose);

/// Replaces the file in one step: a reader sees the old text or the new one, never a part.
/// Throws StartError with a sentence about `purpose`; the old file then stands as it was.
void ReplaceTextFile(const std::string& path, const std::string& text, const std::string& purpose);

}  // namespace qv_service
