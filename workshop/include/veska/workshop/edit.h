/// Edits that keep everything in a management file in step.
#pragma once

#include <veska/CVMGInfo.h>

#include <span>
#include <string>
#include <vector>

#include "veska/workshop/error.h"
#include "veska/workshop/text.h"

namespace VESKA::workshop {

/// An operation, which is asked for by its name and a word for each argument.
struct Operation {
  const char* name;       ///< "move-program"
  const char* arguments;  ///< their names with a blank between them: "N TO"
  const char* help;       ///< what it does, in a few words without a line end
};

/// All operations, in the order to show them in.
VESKA_WORKSHOP_API std::span<const Operation> Operations();

/// Throws Error (kRequest) for words that are refused whatever the file: an operation that there is
/// none of, or arguments that are missing.
VESKA_WORKSHOP_API void CheckRequest(std::span<const std::string> words);

/// Does operations one after the other and completes the object: {"delete-program", "3",
/// "set-disc-text", "News"}. Items are numbered from 1 as the operations before leave them; cells
/// are those of the original program chain, counted through its programs. In a text, `\\` is a
/// backslash and `\xNN` a byte; all else is UTF-8 that `encode` makes the disc's bytes of.
///
/// The cell points of the header, the play lists and the original chain's programs follow the
/// cells, and so do the programs' cell counts; one whose cell is deleted names none (0xFFFF).
/// Returns what followed that nobody asked for, one line each.
///
/// Throws Error (kRequest), whose place is the operation, when one is out of range or a text does
/// not fit; then, and when there is no memory, the object is as it was. References into the object
/// are stale after an edit that was done. Takes time and memory in proportion to the object for
/// each operation.
VESKA_WORKSHOP_API std::vector<std::string> Edit(CVMGInfo& info, std::span<const std::string> words,
                                                 const EncodeText& encode = EncodeUtf8);

/// What Edit would change, line by line: first what it returns, then the differences (diff.h) that
/// this does not tell already, with texts by `decode`. Throws as Edit does, and Error (kFile) where
/// the format could not hold the result.
VESKA_WORKSHOP_API std::vector<std::string> PreviewEdit(const CVMGInfo& info,
                                                        std::span<const std::string> words,
                                                        const EncodeText& encode = EncodeUtf8,
                                                        const DecodeText& decode = DecodeUtf8);

}  // namespace VESKA::workshop
