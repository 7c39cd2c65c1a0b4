/// The images that the benchmarks work on, built through the library's own operations.
#pragma once

#include <vector>

struct Image {
  std::vector<unsigned char> bytes;
  int records;  ///< of the kind that the image is made of
};

/// A typical recording: 45,000 VOBU entries in 12 VOBs, with programs, cells and texts.
Image TypicalRecording();
/// `vobus` VOBU entries in as few VOBs as can hold them, with a time entry for every 20.
Image VobuEntries(int vobus);
/// 60,000 VOBs of one VOBU.
Image SmallVobs();
/// 60,000 cells, a quarter of them still cells; more than half of them with an entry point, some
/// with a long one.
Image SmallCells();
/// 2,000 still groups of 200 entries whose forms are mixed at random.
Image StillGroups();
/// 1,160 text sets of eight texts or so, of one to eight bytes: more do not fit into the addresses.
Image Texts();
