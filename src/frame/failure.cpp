#include <veska/failure.h>

#include <system_error>

namespace VESKA {
namespace {

const char* NameOf(FailureTable table) {
  switch (table) {
    case FailureTable::kHeader:
      return "the header";
    case FailureTable::kPlayLists:
      return "the play list table";
    case FailureTable::kMovie:
      return "the movie table";
    case FailureTable::kStill:
      return "the still picture table";
    case FailureTable::kOriginalChain:
      return "the original program chain";
    case FailureTable::kUserChains:
      return "the table of user-defined chains";
    case FailureTable::kTexts:
      return "the text data";
    case FailureTable::kManufacturers:
      return "the manufacturer table";
    default:
      return "a table";
  }
}

const char* NameOfOne(FailureList list) {
  switch (list) {
    case FailureList::kPlayLists:
      return "play list ";
    case FailureList::kMovieStreams:
    case FailureList::kStillStreams:
      return "stream ";
    case FailureList::kMovieVobs:
      return "VOB ";
    case FailureList::kStillGroups:
      return "group ";
    case FailureList::kAudioStreams:
      return "audio stream ";
    case FailureList::kAudioGroups:
      return "audio group ";
    case FailureList::kPrograms:
      return "program ";
    case FailureList::kCells:
      return "cell ";
    case FailureList::kUserChains:
      return "chain ";
    case FailureList::kTextItems:
      return "item ";
    default:
      return "record ";
  }
}

/// The table, and the record in it by its number.
std::string PlaceOf(const Failure& failure) {
  if (failure.list == FailureList::kNone) return NameOf(failure.table);
  return NameOfOne(failure.list) + std::to_string(failure.index + 1) + " of " +
         NameOf(failure.table);
}

std::string SystemMessage(const Failure& failure, const char* otherwise) {
  return failure.system_error == 0 ? otherwise
                                   : std::system_category().message(failure.system_error);
}

}  // namespace

std::string Describe(const Failure& failure) {
  const std::string place = PlaceOf(failure);
  const std::string at = " at offset " + std::to_string(failure.offset);
  switch (failure.kind) {
    case FailureKind::kNone:
      return "nothing failed";
    case FailureKind::kNoData:
      return "there is no image, the pointer is null";
    case FailureKind::kNoName:
      return "the name of the file is empty or not one that the system takes";
    case FailureKind::kNoFile:
      return "cannot be read: there is no such file";
    case FailureKind::kNotAFile:
      return "it is a folder or a device, not a file";
    case FailureKind::kUnreadable:
      return "cannot be read: " + SystemMessage(failure, "it ends before its size says");
    case FailureKind::kEmpty:
      return "not a management file: it is empty";
    case FailureKind::kTooLarge:
      return "it has 4 GiB or more, and addresses in a management file have 32 bits";
    case FailureKind::kNotManagement:
      return "not a management file: it does not begin with DVD_RTR_VMG0";
    case FailureKind::kEndsWithinTable:
      return "damaged: " + place + " reaches past the end of the file" + at;
    case FailureKind::kNegativeLength:
      return "damaged: " + place + " has a record of negative length" + at;
    case FailureKind::kOverBudget:
      return "damaged: " + place + " takes more memory than a file of this size may" + at;
    case FailureKind::kNoMemory:
      return "there is not enough memory";
    case FailureKind::kWouldNotReadBack:
      return "is not written: " + place + " would not read back as it is";
    case FailureKind::kPadding:
      return "is not written: the end address of " + place + " lies far beyond its end";
    case FailureKind::kReadOnly:
      return "cannot be written: it is read-only";
    case FailureKind::kLocked:
      return "cannot be opened: another program is writing it";
    case FailureKind::kUnwritable:
      return "cannot be written: " + SystemMessage(failure, "the system does not take all of it");
  }
  return "it failed for a reason that this version does not know";
}

}  // namespace VESKA
