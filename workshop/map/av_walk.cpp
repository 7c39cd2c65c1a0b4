// The walk over the movie table and the still table.
#include <algorithm>

#include "map/index_walk.h"

namespace VESKA::workshop {

namespace {

constexpr std::uint64_t kTimeSize = kFileSize<tag_TM_ENT>;
constexpr std::uint64_t kVobuSize = kFileSize<tag_VOBU_ENT>;

/// Where the time map of a VOB stands.
std::uint64_t TimeMapAt(const ImageBytes& image, std::uint64_t vob) {
  const auto info = VobFlags(image, vob);
  return vob + kFileSize<tag_M_VOB_GI> + (info.HasSeamlessInfo() ? kFileSize<tag_SMLI> : 0) +
         (info.HasAudioGaps() ? kFileSize<tag_AGAPI> : 0);
}

/// True when the index is there: because the presence count is 1, or because it stands there all
/// the same.
bool IsPresent(Walk& walk, const FileNumber& presence, const Index& index, const Room& room) {
  if (presence.value == 1) return true;
  const bool stands = ImpliedCount(walk, index, room.next).has_value();
  if (presence.value != 0) {
    walk.Report(Code::kPresenceValue, presence, "", stands ? "1" : "0");
  } else if (stands) {
    walk.Report(Code::kPresentUncounted, presence, "", "1");
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
    walk.ReportCount(count, right);
    count.value = right;
    return true;
  }
  if (fit.crowded) walk.ReportCrowded(vobus, fit);
  return !fit.crowded;
}

std::uint64_t TimeMap(Walk& walk, std::uint64_t at, const Fit& fit) {
  walk.Add(Part::kTimeMap, at);
  FileNumber times = walk.CountOf(Part::kTimeEntries, at);
  FileNumber vobus = walk.CountOf(Part::kVobus, at);
  at += kFileSize<tag_TMAP_GI>;
  if (!FitTimeMap(walk, at, fit, times, vobus)) return fit.end;
  const std::uint64_t times_end = walk.AddRun(Part::kTimeEntries, at, times);
  if (times_end < at + kTimeSize * times.value) {
    walk.AddRun(Part::kVobus, walk.FileEnd(),
                vobus);  // behind a time entry that the file ends in
    return times_end;
  }
  return walk.AddRun(Part::kVobus, times_end, vobus);
}

std::uint64_t Vob(Walk& walk, const Item& item, std::uint32_t number) {
  return walk.AddWhole(Part::kVob, item.at, number, [&] {
    const auto info = VobFlags(walk.Image(), item.at);
    std::uint64_t at = item.at;
    const auto add = [&](Part part) {
      walk.Add(part, at);
      at += RecordSize(part);
    };
    add(Part::kVobInfo);
    if (info.HasSeamlessInfo()) add(Part::kSeamless);
    if (info.HasAudioGaps()) add(Part::kAudioGaps);
    return TimeMap(walk, at, item.fit);
  });
}

ItemKind Vobs(Walk& walk) {
  return {[&walk](const Item&, std::uint64_t at) {
            const std::uint64_t map = TimeMapAt(walk.Image(), at);
            return map + kFileSize<tag_TMAP_GI> +
                   kTimeSize * walk.CountOf(Part::kTimeEntries, map).value +
                   kVobuSize * walk.CountOf(Part::kVobus, map).value;
          },
          [&walk](const Item& item, std::uint32_t number) { return Vob(walk, item, number); }};
}

// --- The still table -----------------------------------------------------------------------------

/// What stands behind the still groups.
struct AudioPart {
  std::uint64_t table = 0;
  FileNumber streams;
  FileNumber presence;
  std::uint64_t streams_at = 0;  ///< where the streams stand, 0 when that cannot be told
  std::optional<std::uint64_t> index_at;
};

/// Groups of entries: the information `info`, in which a field counts the `entries`, and they.
ItemKind GroupsOf(Walk& walk, Part group, Part info, Part entries, EntrySize size) {
  return {[=, &walk](const Item&, std::uint64_t at) {
            return EndOfEntries(walk, at + RecordSize(info), walk.CountOf(entries, at).value, size);
          },
          [=, &walk](const Item& item, std::uint32_t number) {
            return walk.AddWhole(group, item.at, number, [&] {
              walk.Add(info, item.at);
              return AddEntries(walk, entries, item.at + RecordSize(info),
                                walk.CountOf(entries, item.at), size, item.fit);
            });
          }};
}

/// True when the header of the table places an index of audio groups that stands in order, with its
/// streams from `streams_at` on.
bool AudioStandsAsStated(Walk& walk, std::uint64_t table, std::uint64_t streams_at,
                         const Room& room) {
  const std::uint64_t streams = walk.CountOf(Part::kAudioStreams, table).value;
  const Index index =
      IndexAt(walk, Part::kAudioIndex, table, streams_at + kFileSize<tag_S_A_ATR> * streams);
  return walk.CountOf(Part::kAudioIndex, table).value == 1 &&
         ImpliedCount(walk, index, room.next) == index.count.value;
}

/// Finds what stands behind the still groups, which no address names: the one place at which an
/// index of audio groups stands in order, and the streams before it.
AudioPart FindAudioPart(Walk& walk, std::uint64_t table, std::uint64_t from, const Room& room) {
  AudioPart part;
  part.table = table;
  part.streams = walk.CountOf(Part::kAudioStreams, table);
  part.presence = walk.CountOf(Part::kAudioIndex, table);
  const std::uint64_t end = std::min(room.next, walk.FileEnd());
  int found = 0;
  for (std::uint64_t at = from; at < end; ++at) {
    walk.Spend(1);
    const Index index = IndexAt(walk, Part::kAudioIndex, table, at);
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
  if (part.index_at && at != part.streams_at && at < walk.FileEnd()) {
    const std::uint64_t between = *part.index_at - at;
    if (at <= *part.index_at && between % kSize == 0 && between / kSize <= 0xFF) {
      walk.ReportCount(part.streams, between / kSize);
      part.streams.value = between / kSize;
    } else {
      at = part.streams_at;
    }
  }
  if (at == 0) {
    if (part.streams.value == 0 && part.presence.value == 0) return 0;
    walk.Report(Code::kAddressOutside, part.streams.offset, walk.PointerOf(Part::kAudioStreams),
                "they stand after the still groups, whose size is not known");
    walk.AddLost(Part::kAudioStreams, 0, part.streams.value);
    return 0;
  }
  const std::uint64_t end = walk.AddRun(Part::kAudioStreams, at, part.streams);
  const Index index = IndexAt(walk, Part::kAudioIndex, part.table, at + kSize * part.streams.value);
  return IsPresent(walk, part.presence, index, room)
             ? WalkIndex(walk, index, room,
                         GroupsOf(walk, Part::kAudioGroup, Part::kAudioGroupInfo,
                                  Part::kAudioEntries, AudioEntrySize))
             : end;
}

/// What both tables begin with behind their header: streams, then an index if one is there.
struct StreamsAndIndex {
  std::uint64_t streams_at;
  FileNumber streams;
  FileNumber presence;
  Index index;
};

StreamsAndIndex FindIndex(Walk& walk, std::uint64_t table, Part streams_part, Part index_part,
                          const Room& room) {
  const std::uint64_t at = table + RecordSize(InfoOf(streams_part).counted.in);
  FileNumber streams = walk.CountOf(streams_part, table);
  const FileNumber presence = walk.CountOf(index_part, table);
  const auto behind = [&](std::uint64_t count) {
    return IndexAt(walk, index_part, table, at + RecordSize(streams_part) * count);
  };
  if (presence.value == 1) streams.value = BlocksBefore(walk, streams, room, behind);
  return {at, streams, presence, behind(streams.value)};
}

}  // namespace

std::uint64_t MovieTable(Walk& walk, std::uint64_t at, const Room& room) {
  const auto [streams_at, streams, presence, index] =
      FindIndex(walk, at, Part::kMovieStreams, Part::kVobIndex, room);
  const std::uint64_t end = walk.AddRun(Part::kMovieStreams, streams_at, streams);
  return IsPresent(walk, presence, index, room) ? WalkIndex(walk, index, room, Vobs(walk)) : end;
}

std::uint64_t StillTable(Walk& walk, std::uint64_t at, const Room& room) {
  const auto [streams_at, streams, presence, index] =
      FindIndex(walk, at, Part::kStillStreams, Part::kGroupIndex, room);
  // Where no groups are stated, what looks like their index may be that of the audio groups.
  const bool is_absent = presence.value == 0 && AudioStandsAsStated(walk, at, index.start, room);
  const std::uint64_t index_end = is_absent ? index.start : index.Pointer(index.count.value);
  const AudioPart audio = FindAudioPart(walk, at, index_end, room);
  std::uint64_t end = walk.AddRun(Part::kStillStreams, streams_at, streams);
  std::optional<std::uint64_t> groups_end = end;
  if (!is_absent && IsPresent(walk, presence, index, room)) {
    std::optional<std::uint64_t> size;
    end = WalkIndex(
        walk, index, {audio.streams_at, room.next},
        GroupsOf(walk, Part::kStillGroup, Part::kGroupInfo, Part::kStillEntries, StillEntrySize),
        &size);
    groups_end.reset();
    if (size) groups_end = index.start + *size;
  }
  return std::max(end, WalkAudioPart(walk, audio, groups_end, room));
}

}  // namespace VESKA::workshop
