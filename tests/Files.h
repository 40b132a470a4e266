// Reads and writes the files of tests.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// Also makes the directories above the file. Returns the path.
inline std::string writeFile(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
