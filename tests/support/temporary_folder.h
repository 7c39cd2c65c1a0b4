/// A new folder, removed with all that is in it.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

class TemporaryFolder {
 public:
  using Path = std::filesystem::path;

  TemporaryFolder() { std::filesystem::create_directory(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }

  operator const Path&() const { return path_; }
  Path operator/(const Path& name) const { return path_ / name; }

  template <class Bytes>
  Path Write(const Path& name, const Bytes& bytes) const {
    std::ofstream(path_ / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return path_ / name;
  }

 private:
  Path path_ =
      std::filesystem::temp_directory_path() / ("veska-" + std::to_string(std::random_device()()));
};
