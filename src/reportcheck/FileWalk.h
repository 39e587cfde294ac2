// The files a PATH of collect or findings stands for.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

// Calls `onFile` for every file at `path`: the file itself, or a folder's
// files in name order, then its folders', one level at a time (only one
// folder's names are held at once). A path that cannot be read, a pipe, a
// device or a broken link goes to `onProblem` with the reason. Gives the
// worst status the calls gave.
int ForEachFile(const std::filesystem::path& path, const std::function<int(const std::filesystem::path&)>& onFile,
                const std::function<int(const std::filesystem::path&, const std::string&)>& onProblem);
