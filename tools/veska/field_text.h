// The values of fields and bytes as text for people.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/layouts.h>

#include <cstdint>
#include <span>
#include <string>

#include "fields.h"

namespace veska_tool {

/// The value of a field. A cell point names one of `cells`; with `raw_positions` its position is
/// bytes whatever the cell is, as in user-defined program chains.
std::string FieldText(const Record& record, const VESKA::Field& field, VESKA::CPGCInfo& cells,
                      bool raw_positions = false);

/// True for bytes that are all zero.
bool IsZero(std::span<const unsigned char> bytes);

/// Text in quotes where all of it is printable, else hex; "(empty)" for zeros.
std::string TextOrHex(std::span<const unsigned char> bytes);

/// "1 byte", "3 bytes".
std::string Plural(std::uint64_t count, const std::string& what);

/// `h:mm:ss.mmm`.
std::string TimeText(std::uint64_t milliseconds);

/// Hex with the readable text beside, 16 bytes a line, each line after `indent`; the first
/// `lines` lines at most.
std::string HexDump(std::span<const unsigned char> bytes, const std::string& indent,
                    std::size_t lines);

}  // namespace veska_tool
