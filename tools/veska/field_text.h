// The values of fields and bytes as text for people.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/layouts.h>

#include <cstdint>
#include <span>
#include <string>

#include "fields.h"

namespace veska_tool {

/// The value of a field. `chain` is the chain whose cells a cell point names; null says that the
/// positions in this record are bytes, whatever the cell (as in user-defined program chains).
std::string FieldText(const Record& record, const VESKA::Field& field, VESKA::CPGCInfo* cells,
                      bool raw_positions = false);

/// True for bytes that are all zero.
bool IsZero(std::span<const unsigned char> bytes);

/// Text in quotes where all of it is printable, else hex; "(empty)" for zeros.
std::string TextOrHex(std::span<const unsigned char> bytes);

/// `h:mm:ss.mmm`.
std::string TimeText(std::uint64_t milliseconds);

/// Hex with the readable text beside, 16 bytes a line, each line after `indent`; the first
/// `lines` lines at most.
std::string HexDump(std::span<const unsigned char> bytes, const std::string& indent,
                    std::size_t lines);

}  // namespace veska_tool
