// What `veska edit` can do to a file.
#pragma once

#include <veska/CVMGInfo.h>

#include <span>
#include <string>
#include <vector>

namespace veska_tool {

class EditArguments;

/// A file that is being edited.
struct Edit {
  VESKA::CVMGInfo& info;
  std::vector<std::string> notes;  ///< what followed that nobody asked for, one line each
};

/// An operation of `veska edit`, by the words that it takes on the command line.
struct EditOperation {
  const char* name;
  const char* arguments;  ///< their names, with blanks between them
  const char* help;
  void (*run)(Edit& edit, const EditArguments& arguments);
};

/// All operations, in the order of the help.
std::span<const EditOperation> EditOperations();

/// One operation with its arguments as they were given.
struct EditStep {
  const EditOperation* operation;
  std::vector<std::string> arguments;
};

/// The operations that the words of a command line ask for. Throws Failure (wrong usage).
std::vector<EditStep> ParseEditSteps(const std::vector<std::string>& words);

/// Does the operations in order. Numbers mean the file as the operation finds it. Throws Failure
/// (wrong usage) when one is out of range or a text does not fit; the file is then half edited.
void RunEditSteps(const std::vector<EditStep>& steps, Edit& edit);

}  // namespace veska_tool
