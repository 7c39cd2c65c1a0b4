// The walk over the movie table and the still table.
#include <veska/records.h>

#include <algorithm>

#include "map/index_walk.h"
#include "map/sizes.h"

namespace VESKA::workshop {

namespace {

constexpr std::uint64_t kVobLeast = kFileSize<tag_M_VOB_GI> + kFileSize<tag_TMAP_GI>;
constexpr std::uint64_t kTimeSize = kFileSize<tag_TM_ENT>;
constexpr std::uint64_t kVobuSize = kFileSize<tag_VOBU_ENT>;
constexpr std::uint64_t kCountSize = 2;  // of the indexes in these tables
constexpr unsigned kAddressSize = 4;

/// Where the time map of a VOB stands.
std::uint64_t TimeMapAt(const ImageBytes& image, std::uint64_t vob) {
  const auto info = image.Read<tag_M_VOB_GI>(vob);
  return vob + kFileSize<tag_M_VOB_GI> + (info.HasSeamlessInfo() ? kFileSize<tag_SMLI> : 0) +
         (info.HasAudioGaps() ? kFileSize<tag_AGAPI> : 0);
}

/// An index that stands at `at` in the table at `table`.
Index AvIndex(Part part, Part item, std::uint64_t least, const char* address_name,
              const FileNumber& count, std::uint64_t table) {
  return {part,         item,         least,        address_name,
          count,        0xFFFF,       count.offset, count.offset + kCountSize,
          kAddressSize, kAddressSize, table};
}

/// True when the index is there: because the presence count is 1, or because it stands there all
/// the same.
bool IsPresent(Walk& walk, const FileNumber& presence, const Index& index, const Room& room) {
  if (presence.value == 1) return true;
  const bool stands = ImpliedCount(walk, index, room.next).has_value();
  if (presence.value != 0) {
    walk.build.Report(Code::kPresenceValue, presence.offset, walk.build.Here(), Is(presence),
                      stands ? "1" : "0");
  } else if (stands) {
    walk.build.Report(Code::kPresentUncounted, presence.offset, walk.build.Here(), Is(presence),
                      "1");
  }
  return stands;
}

/// Where the entries have to end elsewhere than both counts say, corrects the one that alone can be
/// wrong. False when the counts are of no use.
bool FitTimeMap(Walk& walk, std::uint64_t at, const Fit& fit, FileNumber& times,
                FileNumber& vobus) {
  const std::uint64_t times_size = kTimeSize * times.value;
  const std::uint64_t vobus_size = kVobuSize * vobus.value;
  if (fit.end == 0 || at + times_size + vobus_size == fit.end) return true;
  const std::uint64_t room = fit.end > at ? fit.end - at : 0;
  const auto can_be = [room](std::uint64_t other, std::uint64_t size) {
    return other <= room && (room - other) % size == 0 && (room - other) / size <= 0xFFFF;
  };
  const bool times_can = can_be(vobus_size, kTimeSize);
  const bool vobus_can = can_be(times_size, kVobuSize);
  if (times_can != vobus_can) {
    FileNumber& count = times_can ? times : vobus;
    const std::uint64_t right =
        times_can ? (room - vobus_size) / kTimeSize : (room - times_size) / kVobuSize;
    walk.build.ReportCount(count, right);
    count.value = right;
    return true;
  }
  if (fit.crowded) walk.build.ReportCrowded(vobus, fit);
  return !fit.crowded;
}

std::uint64_t TimeMap(Walk& walk, std::uint64_t at, const Fit& fit) {
  walk.build.Add(Part::kTimeMap, at, kFileSize<tag_TMAP_GI>);
  FileNumber times = walk.build.Number<tag_TMAP_GI>("TM_ENT_Ns", at);
  FileNumber vobus = walk.build.Number<tag_TMAP_GI>("VOBU_ENT_Ns", at);
  at += kFileSize<tag_TMAP_GI>;
  if (!FitTimeMap(walk, at, fit, times, vobus)) return fit.end;
  const std::uint64_t times_end = walk.build.AddRun(Part::kTimeEntries, at, times);
  if (times_end < at + kTimeSize * times.value) {
    walk.build.AddRun(Part::kVobus, walk.build.FileEnd(),
                      vobus);  // behind a time entry that the file ends in
    return times_end;
  }
  return walk.build.AddRun(Part::kVobus, times_end, vobus);
}

std::uint64_t Vob(Walk& walk, const Item& item, std::uint32_t number) {
  std::uint64_t end = 0;
  walk.build.AddWhole(Part::kVob, item.at, number, [&] {
    const auto info = walk.build.Image().Read<tag_M_VOB_GI>(item.at);
    std::uint64_t at = item.at;
    const auto add = [&](Part part) {
      walk.build.Add(part, at, RecordSize(part));
      at += RecordSize(part);
    };
    add(Part::kVobInfo);
    if (info.HasSeamlessInfo()) add(Part::kSeamless);
    if (info.HasAudioGaps()) add(Part::kAudioGaps);
    end = TimeMap(walk, at, item.fit);
  });
  return end;
}

ItemKind Vobs(Walk& walk) {
  return {[&walk](const Item&, std::uint64_t at) {
            const std::uint64_t map = TimeMapAt(walk.build.Image(), at);
            const auto header = walk.build.Image().Read<tag_TMAP_GI>(map);
            return map + kFileSize<tag_TMAP_GI> + kTimeSize * header.TM_ENT_Ns +
                   kVobuSize * header.VOBU_ENT_Ns;
          },
          [&walk](const Item& item, std::uint32_t number) { return Vob(walk, item, number); }};
}

// --- The still table
// ------------------------------------------------------------------------------

struct GroupParts {
  Part group, info, entries;
};

/// What stands behind the still groups.
struct AudioPart {
  std::uint64_t table = 0;
  FileNumber streams;
  FileNumber presence;
  std::uint64_t streams_at = 0;  ///< where the streams stand, 0 when that cannot be told
  std::optional<std::uint64_t> index_at;
};

/// A group of entries: its information, in which the field `count_name` counts them, and they.
template <class Info>
ItemKind GroupsOf(Walk& walk, const GroupParts& parts, const char* count_name, EntrySize size) {
  constexpr std::uint64_t kInfo = kFileSize<Info>;
  return {[=, &walk](const Item&, std::uint64_t at) {
            return EndOfEntries(walk.build, at + kInfo,
                                walk.build.Number<Info>(count_name, at).value, size);
          },
          [=, &walk](const Item& item, std::uint32_t number) {
            std::uint64_t end = 0;
            walk.build.AddWhole(parts.group, item.at, number, [&] {
              walk.build.Add(parts.info, item.at, kInfo);
              end = AddEntries(walk.build, parts.entries, item.at + kInfo,
                               walk.build.Number<Info>(count_name, item.at), 0xFF, size, item.fit);
            });
            return end;
          }};
}

ItemKind StillGroups(Walk& walk) {
  return GroupsOf<tag_S_VOG_GI>(walk, {Part::kStillGroup, Part::kGroupInfo, Part::kStillEntries},
                                "S_VOB_Ns", StillEntrySize);
}

ItemKind AudioGroups(Walk& walk) {
  return GroupsOf<tag_S_AAG_GI>(walk,
                                {Part::kAudioGroup, Part::kAudioGroupInfo, Part::kAudioEntries},
                                "AA_ENT_Ns", AudioEntrySize);
}

Index AudioIndex(Walk& walk, std::uint64_t table, std::uint64_t at) {
  return AvIndex(Part::kAudioIndex, Part::kAudioGroup,
                 kFileSize<tag_S_AAG_GI> + kFileSize<tag_AA_ENT>, "S_AAGI_SA",
                 walk.build.Number<tag_S_AAFI_GI>("S_AAGI_SRP_Ns", at), table);
}

/// True when the header of the table places an index of audio groups that stands in order, with its
/// streams from `streams_at` on.
bool AudioStandsAsStated(Walk& walk, std::uint64_t table, std::uint64_t streams_at,
                         const Room& room) {
  const std::uint64_t streams = walk.build.Number<tag_S_AVFITI>("S_A_ATR_Ns", table).value;
  const Index index = AudioIndex(walk, table, streams_at + kFileSize<tag_S_A_ATR> * streams);
  return walk.build.Number<tag_S_AVFITI>("S_AAFI_Ns", table).value == 1 &&
         ImpliedCount(walk, index, room.next) == index.count.value;
}

/// Finds what stands behind the still groups, which no address names: the one place at which an
/// index of audio groups stands in order, and the streams before it.
AudioPart FindAudioPart(Walk& walk, std::uint64_t table, std::uint64_t from, const Room& room) {
  AudioPart part;
  part.table = table;
  part.streams = walk.build.Number<tag_S_AVFITI>("S_A_ATR_Ns", table);
  part.presence = walk.build.Number<tag_S_AVFITI>("S_AAFI_Ns", table);
  const std::uint64_t end = std::min(room.next, walk.build.FileEnd());
  int found = 0;
  for (std::uint64_t at = from; at < end; ++at) {
    walk.build.Spend(1);
    const Index index = AudioIndex(walk, table, at);
    if (ImpliedCount(walk, index, room.next) != index.count.value) continue;
    ++found;
    part.index_at = at;
  }
  if (found != 1) part.index_at.reset();
  const std::uint64_t size = kFileSize<tag_S_A_ATR> * part.streams.value;
  const std::uint64_t streams_end = part.index_at              ? *part.index_at
                                    : part.presence.value == 0 ? room.own
                                                               : 0;
  if (streams_end >= from + size) part.streams_at = streams_end - size;
  return part;
}

/// Maps what was found. `groups_end` is the end of the still groups, if it is known.
std::uint64_t WalkAudioPart(Walk& walk, AudioPart part, std::optional<std::uint64_t> groups_end,
                            const Room& room) {
  constexpr std::uint64_t kSize = kFileSize<tag_S_A_ATR>;
  std::uint64_t at = groups_end ? *groups_end : part.streams_at;
  if (part.index_at && at != part.streams_at && at < walk.build.FileEnd()) {
    const std::uint64_t between = *part.index_at - at;
    if (at <= *part.index_at && between % kSize == 0 && between / kSize <= 0xFF) {
      walk.build.ReportCount(part.streams, between / kSize);
      part.streams.value = between / kSize;
    } else {
      at = part.streams_at;
    }
  }
  if (at == 0) {
    if (part.streams.value == 0 && part.presence.value == 0) return 0;
    walk.build.Report(Code::kAddressOutside, part.streams.offset,
                      walk.build.PointerOf(Part::kAudioStreams),
                      "they stand after the still groups, whose size is not known");
    walk.build.AddLost(Part::kAudioStreams, 0, static_cast<std::uint32_t>(part.streams.value));
    return 0;
  }
  const std::uint64_t end = walk.build.AddRun(Part::kAudioStreams, at, part.streams);
  const Index index = AudioIndex(walk, part.table, at + kSize * part.streams.value);
  return IsPresent(walk, part.presence, index, room)
             ? WalkIndex(walk, index, room, AudioGroups(walk))
             : end;
}

}  // namespace

std::uint64_t MovieTable(Walk& walk, std::uint64_t at) {
  walk.build.Add(Part::kMovieHeader, at, kFileSize<tag_M_AVFITI>);
  const FileNumber end_address = walk.build.Number<tag_M_AVFITI>("M_AVFIT_EA", at);
  const Room room = walk.RoomOf(at, end_address);
  const std::uint64_t streams_at = at + kFileSize<tag_M_AVFITI>;
  const auto index_behind = [&](std::uint64_t streams) {
    const auto count = walk.build.Number<tag_M_AVFI_GI>(
        "M_VOBI_SRP_Ns", streams_at + kFileSize<tag_M_VOB_STI> * streams);
    return AvIndex(Part::kVobIndex, Part::kVob, kVobLeast, "M_VOBI_SA", count, at);
  };
  const FileNumber presence = walk.build.Number<tag_M_AVFITI>("M_AVFI_Ns", at);
  FileNumber streams = walk.build.Number<tag_M_AVFITI>("M_VOB_STI_Ns", at);
  if (presence.value == 1) streams.value = BlocksBefore(walk, streams, room, index_behind);

  const std::uint64_t streams_end = walk.build.AddRun(Part::kMovieStreams, streams_at, streams);
  const Index index = index_behind(streams.value);
  const std::uint64_t end = IsPresent(walk, presence, index, room)
                                ? WalkIndex(walk, index, room, Vobs(walk))
                                : streams_end;
  CheckEnd(walk, end_address, at, end);
  return end;
}

std::uint64_t StillTable(Walk& walk, std::uint64_t at) {
  walk.build.Add(Part::kStillHeader, at, kFileSize<tag_S_AVFITI>);
  const FileNumber end_address = walk.build.Number<tag_S_AVFITI>("S_AVFIT_EA", at);
  const Room room = walk.RoomOf(at, end_address);
  const std::uint64_t streams_at = at + kFileSize<tag_S_AVFITI>;
  const auto index_behind = [&](std::uint64_t streams) {
    const auto count = walk.build.Number<tag_S_AVFI_GI>(
        "S_VOGI_SRP_Ns", streams_at + kFileSize<tag_S_VOB_STI> * streams);
    return AvIndex(Part::kGroupIndex, Part::kStillGroup,
                   kFileSize<tag_S_VOG_GI> + StillEntrySize(0), "S_VOGI_SA", count, at);
  };
  const FileNumber presence = walk.build.Number<tag_S_AVFITI>("S_AVFI_Ns", at);
  FileNumber streams = walk.build.Number<tag_S_AVFITI>("S_VOB_STI_Ns", at);
  if (presence.value == 1) streams.value = BlocksBefore(walk, streams, room, index_behind);

  const Index index = index_behind(streams.value);
  // Where no groups are stated, what looks like their index may be that of the audio groups.
  const bool is_absent = presence.value == 0 && AudioStandsAsStated(walk, at, index.start, room);
  const std::uint64_t index_end = is_absent ? index.start : index.Pointer(index.count.value);
  const AudioPart audio = FindAudioPart(walk, at, index_end, room);
  std::uint64_t end = walk.build.AddRun(Part::kStillStreams, streams_at, streams);
  std::optional<std::uint64_t> groups_end = end;
  if (!is_absent && IsPresent(walk, presence, index, room)) {
    std::optional<std::uint64_t> size;
    end = WalkIndex(walk, index, {audio.streams_at, room.next}, StillGroups(walk), &size);
    groups_end.reset();
    if (size) groups_end = index.start + *size;
  }
  end = std::max(end, WalkAudioPart(walk, audio, groups_end, room));
  CheckEnd(walk, end_address, at, end);
  return end;
}

}  // namespace VESKA::workshop
