// Files, standard streams and messages of the tool.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/workshop/load.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "command.h"

namespace veska_tool {

using VESKA::workshop::Bytes;

/// The arguments behind the program's name, in UTF-8 on Windows and as they are elsewhere.
std::vector<std::string> Arguments(int argc, char** argv);

/// The file that an argument names, and the name of a file as it stands in a message: control
/// characters are escaped.
std::filesystem::path PathOf(const std::string& argument);
std::string NameOf(const std::filesystem::path& path);

/// The same of an argument that "-" may stand for.
std::string NameOfInput(const std::string& argument);
std::string NameOfOutput(const std::string& argument);

/// True for "-", which stands for standard input or output.
bool IsStandard(const std::string& argument);

/// No honest management file is near this size, in bytes, and a stream does not tell its own.
inline constexpr std::uint64_t kLargestInput = std::uint64_t{256} << 20U;

/// Opens a file or a device for reading. Throws Failure; never null.
std::FILE* OpenToRead(const std::filesystem::path& path);

/// The bytes of a file, or of standard input for "-". Throws Failure.
Bytes ReadInput(const std::string& file);
Bytes ReadInput(const std::filesystem::path& path);

/// Throws Failure when `file` exists and may not be overwritten: for a command to ask before it
/// works. Standard output and devices are never in the way.
void CheckOutput(const std::string& file, bool force);

/// Writes a whole file in one step, so that it is either wholly the new one or as it was. For "-"
/// and devices, writes directly. Refuses to overwrite without `force`. Throws Failure.
void WriteOutput(const std::string& file, std::span<const unsigned char> bytes, bool force);
void WriteOutput(const std::string& file, const std::string& text, bool force);

/// The image of `info`, which is completed, as it is to stand in `file`. Throws Failure when it
/// would not read back equal.
Bytes ImageOf(const std::string& file, VESKA::CVMGInfo& info);

/// Writes the image of `info`, which is completed, to a file or to standard output. Refuses to
/// write what would not read back equal. Throws Failure.
void SaveInfo(const std::string& file, VESKA::CVMGInfo& info, bool force);

/// Throws Failure when something printed could not be written.
void FlushStandardOutput();

/// One line on standard error: `veska: WHERE: WHAT`.
void Message(const std::string& where, const std::string& what);

/// True when standard output (error) is a terminal; `WantsColour` also asks NO_COLOR.
bool OutputIsTerminal();
bool ErrorIsTerminal();
bool WantsColour();

}  // namespace veska_tool
