/// A management file as a tree of text.
#pragma once

#include <span>
#include <string>

#include "veska/workshop/error.h"
#include "veska/workshop/text.h"

namespace VESKA::workshop {

/// What is shown, and how.
struct ShowOptions {
  std::string name = "file";        ///< what the first line calls the file; stands as it is
  bool all = false;                 ///< every record and every byte, however long
  DecodeText decode = DecodeUtf8;   ///< by which texts of the disc are shown
  std::string before_heading = {};  ///< stands before and behind the name of each heading, such as
  std::string after_heading = {};   ///< "\x1b[1m" and "\x1b[0m" to make it bold on a terminal
};

/// What is in a management file: a line for each table, record and block, two blanks deeper a
/// level, each with a line end. Items are numbered from 1; fields bear the format's names. Unless
/// `options.all`, zeros in reserved bytes, the entries of time maps and groups, and the rest of
/// long lists and blocks are left out.
///
/// Throws Error (kFile), as Load does. Takes time and memory in proportion to the text.
VESKA_WORKSHOP_API std::string Show(std::span<const unsigned char> bytes,
                                    const ShowOptions& options = {});

}  // namespace VESKA::workshop
