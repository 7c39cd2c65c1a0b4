/// What the workshop refuses, and where and why.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "veska/workshop/export.h"

namespace VESKA::workshop {

/// Whose mistake it is. The values are for good.
enum class ErrorKind : int {
  kFile = 1,      ///< the bytes are no management file, or a damaged one, or it cannot hold all
  kDocument = 2,  ///< the JSON text is not one that describes a management file
  kRequest = 3    ///< what was asked for cannot be done with this file
};

/// What every function of the workshop throws when it refuses; `what()` is one English sentence
/// without a line end, which names the place but no file. A lack of memory is std::bad_alloc.
class VESKA_WORKSHOP_API Error : public std::runtime_error {
 public:
  Error(ErrorKind kind, const std::string& what, std::string place = {})
      : std::runtime_error(what), kind_(kind), place_(std::move(place)) {}  ///< of that

  ErrorKind Kind() const { return kind_; }  ///< whose mistake it is
  /// The JSON pointer of the mistake in a document ("/movie/vobs/2"), the operation of a request
  /// ("operation 1 (delete-program 9)"); empty where it is about the whole.
  const std::string& Place() const { return place_; }

 private:
  ErrorKind kind_;
  std::string place_;
};

}  // namespace VESKA::workshop
