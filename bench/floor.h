/// The floor under the images of many small structures: what loading and writing them costs when
/// each is one object, header and entries in host order, and all lie in a single block of memory.
/// It reads and writes with the library's checks and conversions; what it lacks is the lists.
#pragma once

#include <cstddef>
#include <memory>

class Floor {
 public:
  virtual ~Floor() = default;
  virtual void Clear() = 0;
  /// Reads the structures of a file's image into a new block.
  virtual void Load(const unsigned char* image, std::size_t size) = 0;
  /// Writes them, as they were loaded, where they stand in the image at `out`.
  virtual void Write(unsigned char* out, std::size_t size) const = 0;
};

std::unique_ptr<Floor> FloorOfVobs();
std::unique_ptr<Floor> FloorOfCells();
std::unique_ptr<Floor> FloorOfStillGroups();
