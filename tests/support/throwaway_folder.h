#pragma once

// A folder for one test's files, gone with it. Bytes are read and written past the product's own file code.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

class ThrowawayFolder {
 public:
  ThrowawayFolder()
      : folder_(std::filesystem::temp_directory_path() / ("vantora-test-" + std::to_string(std::random_device{}()))) {
    std::filesystem::create_directories(folder_);
  }
  ~ThrowawayFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  ThrowawayFolder(const ThrowawayFolder&) = delete;

  [[nodiscard]] std::wstring Path(const std::filesystem::path& name) const { return (folder_ / name).wstring(); }

  static void Write(const std::wstring& path, std::string_view bytes) {
    std::ofstream file(std::filesystem::path(path), std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  [[nodiscard]] static std::string Read(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::filesystem::path folder_;
};
