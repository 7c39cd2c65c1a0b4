// Files, standard streams and messages of the tool.
#pragma once

#include <veska/CVMGInfo.h>

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "command.h"

namespace veska_tool {

using Bytes = std::vector<unsigned char>;

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

/// The bytes of a file, or of standard input for "-". Throws Failure.
Bytes ReadInput(const std::string& file);

/// Throws Failure when `file` exists and may not be overwritten: for a command to ask before it
/// works. Standard output and devices are never in the way.
void CheckOutput(const std::string& file, bool force);

/// Writes a whole file in one step, so that it is either wholly the new one or as it was. For "-"
/// and devices, writes directly. Refuses to overwrite without `force`. Throws Failure.
void WriteOutput(const std::string& file, std::span<const unsigned char> bytes, bool force);
void WriteOutput(const std::string& file, const std::string& text, bool force);

/// Loads a management file, in full. Throws Failure that says what is wrong with it.
std::unique_ptr<VESKA::CVMGInfo> LoadInfo(const std::string& file);
/// The same of bytes that were read from `file`.
std::unique_ptr<VESKA::CVMGInfo> LoadInfo(const std::string& file, Bytes& bytes);

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

/// Two lower-case digits a byte.
std::string Hex(std::span<const unsigned char> bytes);

/// The text with its control characters as \xNN, so that it stays on its line.
std::string Visible(const std::string& text);

/// The bytes as text: printable ASCII as it is, all else as \xNN; the zeros at the end are left
/// out.
std::string Readable(std::span<const unsigned char> bytes);

}  // namespace veska_tool
