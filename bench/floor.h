/// The floor under an image: what its operations cost when each structure is one plain object, its
/// numbers in host order, and all of them lie in a single block of memory. Such objects can be read
/// and written, not edited: an edit would have to make them all anew.
#pragma once

#include <cstddef>
#include <memory>

class Floor {
 public:
  virtual ~Floor() = default;

  /// Gives the block back; the next load has one of its own.
  virtual void Clear() = 0;
  /// Reads the structures of a file's image into the block.
  virtual void Load(const unsigned char* image, std::size_t size) = 0;
  /// Makes a copy of all objects in a block of its own, which the next copy replaces.
  virtual void Copy() = 0;
  /// Writes the structures where they stand in the image at `out`.
  virtual void Write(unsigned char* out, std::size_t size) const = 0;
};

std::unique_ptr<Floor> FloorOfVobs();
std::unique_ptr<Floor> FloorOfCells();
std::unique_ptr<Floor> FloorOfStillGroups();
std::unique_ptr<Floor> FloorOfTexts();
