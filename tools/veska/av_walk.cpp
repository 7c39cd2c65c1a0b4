// The walk over the movie table and the still table.
#include <veska/records.h>

#include <algorithm>

#include "table_walk.h"

namespace veska_tool {

using namespace VESKA;

namespace {

constexpr std::uint64_t kVobLeast = kFileSize<tag_M_VOB_GI> + kFileSize<tag_TMAP_GI>;
constexpr std::uint64_t kTimeSize = kFileSize<tag_TM_ENT>;
constexpr std::uint64_t kVobuSize = kFileSize<tag_VOBU_ENT>;
constexpr std::uint64_t kCountSize = 2;  // of the indexes in these tables
constexpr unsigned kAddressSize = 4;

unsigned AudioEntrySize(std::uint8_t) { return kFileSize<tag_AA_ENT>; }

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

}  // namespace

unsigned StillEntrySize(std::uint8_t type) {
  tag_S_VOB_ENT entry{};
  entry.S_VOB_ENT_TY = type;
  return entry.Size();
}

// --- The movie table -----------------------------------------------------------------------------

std::uint64_t TableWalk::MovieTable(std::uint64_t at) {
  Add(Part::kMovieHeader, at, kFileSize<tag_M_AVFITI>);
  const FileNumber end_address = Number<tag_M_AVFITI>("M_AVFIT_EA", at);
  const Room room = RoomOf(at, end_address);
  const std::uint64_t streams_at = at + kFileSize<tag_M_AVFITI>;
  const auto index_behind = [&](std::uint64_t streams) {
    const auto count =
        Number<tag_M_AVFI_GI>("M_VOBI_SRP_Ns", streams_at + kFileSize<tag_M_VOB_STI> * streams);
    return AvIndex(Part::kVobIndex, Part::kVob, kVobLeast, "M_VOBI_SA", count, at);
  };
  const FileNumber presence = Number<tag_M_AVFITI>("M_AVFI_Ns", at);
  FileNumber streams = Number<tag_M_AVFITI>("M_VOB_STI_Ns", at);
  if (presence.value == 1) streams.value = BlocksBefore(streams, room, index_behind);

  const std::uint64_t streams_end = AddRun(Part::kMovieStreams, streams_at, streams);
  const Index index = index_behind(streams.value);
  const std::uint64_t end =
      IsPresent(presence, index, room) ? WalkIndex(index, room, Vobs()) : streams_end;
  CheckEnd(end_address, at, end);
  return end;
}

/// True when the index is there: because the presence count is 1, or because it stands there all
/// the same.
bool TableWalk::IsPresent(const FileNumber& presence, const Index& index, const Room& room) {
  if (presence.value == 1) return true;
  const bool stands = ImpliedCount(index, room.next).has_value();
  if (presence.value != 0) {
    Report(Code::kPresenceValue, presence.offset, Here(), Is(presence), stands ? "1" : "0");
  } else if (stands) {
    Report(Code::kPresentUncounted, presence.offset, Here(), Is(presence), "1");
  }
  return stands;
}

IndexWalk::ItemKind TableWalk::Vobs() {
  return {[this](const Item&, std::uint64_t at) {
            const std::uint64_t map = TimeMapAt(image_, at);
            const auto header = image_.Read<tag_TMAP_GI>(map);
            return map + kFileSize<tag_TMAP_GI> + kTimeSize * header.TM_ENT_Ns +
                   kVobuSize * header.VOBU_ENT_Ns;
          },
          [this](const Item& item, std::uint32_t number) { return Vob(item, number); }};
}

std::uint64_t TableWalk::Vob(const Item& item, std::uint32_t number) {
  std::uint64_t end = 0;
  AddWhole(Part::kVob, item.at, number, [&] {
    const auto info = image_.Read<tag_M_VOB_GI>(item.at);
    std::uint64_t at = item.at;
    const auto add = [&](Part part) {
      Add(part, at, RecordSize(part));
      at += RecordSize(part);
    };
    add(Part::kVobInfo);
    if (info.HasSeamlessInfo()) add(Part::kSeamless);
    if (info.HasAudioGaps()) add(Part::kAudioGaps);
    end = TimeMap(at, item.fit);
  });
  return end;
}

std::uint64_t TableWalk::TimeMap(std::uint64_t at, const Fit& fit) {
  Add(Part::kTimeMap, at, kFileSize<tag_TMAP_GI>);
  FileNumber times = Number<tag_TMAP_GI>("TM_ENT_Ns", at);
  FileNumber vobus = Number<tag_TMAP_GI>("VOBU_ENT_Ns", at);
  at += kFileSize<tag_TMAP_GI>;
  if (!FitTimeMap(at, fit, times, vobus)) return fit.end;
  return AddRun(Part::kVobus, AddRun(Part::kTimeEntries, at, times), vobus);
}

/// Where the entries have to end elsewhere than both counts say, corrects the one that alone can be
/// wrong. False when the counts are of no use.
bool TableWalk::FitTimeMap(std::uint64_t at, const Fit& fit, FileNumber& times, FileNumber& vobus) {
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
    ReportCount(count, right);
    count.value = right;
    return true;
  }
  if (fit.crowded) ReportCrowded(vobus, fit);
  return !fit.crowded;
}

// --- The still table -----------------------------------------------------------------------------

std::uint64_t TableWalk::StillTable(std::uint64_t at) {
  Add(Part::kStillHeader, at, kFileSize<tag_S_AVFITI>);
  const FileNumber end_address = Number<tag_S_AVFITI>("S_AVFIT_EA", at);
  const Room room = RoomOf(at, end_address);
  const std::uint64_t streams_at = at + kFileSize<tag_S_AVFITI>;
  const auto index_behind = [&](std::uint64_t streams) {
    const auto count =
        Number<tag_S_AVFI_GI>("S_VOGI_SRP_Ns", streams_at + kFileSize<tag_S_VOB_STI> * streams);
    return AvIndex(Part::kGroupIndex, Part::kStillGroup,
                   kFileSize<tag_S_VOG_GI> + StillEntrySize(0), "S_VOGI_SA", count, at);
  };
  const FileNumber presence = Number<tag_S_AVFITI>("S_AVFI_Ns", at);
  FileNumber streams = Number<tag_S_AVFITI>("S_VOB_STI_Ns", at);
  if (presence.value == 1) streams.value = BlocksBefore(streams, room, index_behind);

  const Index index = index_behind(streams.value);
  // Where no groups are stated, what looks like their index may be that of the audio groups.
  const bool is_absent = presence.value == 0 && AudioStandsAsStated(at, index.start, room);
  const std::uint64_t index_end = is_absent ? index.start : index.Pointer(index.count.value);
  const AudioPart audio = FindAudioPart(at, index_end, room);
  std::uint64_t end = AddRun(Part::kStillStreams, streams_at, streams);
  std::optional<std::uint64_t> groups_end = end;
  if (!is_absent && IsPresent(presence, index, room)) {
    std::optional<std::uint64_t> size;
    end = WalkIndex(index, {audio.streams_at, room.next}, StillGroups(), &size);
    groups_end.reset();
    if (size) groups_end = index.start + *size;
  }
  end = std::max(end, WalkAudioPart(audio, groups_end, room));
  CheckEnd(end_address, at, end);
  return end;
}

/// A group of entries: its information, in which the field `count_name` counts them, and they.
template <class Info>
IndexWalk::ItemKind TableWalk::GroupsOf(const GroupParts& parts, const char* count_name,
                                        EntrySize size) {
  constexpr std::uint64_t kInfo = kFileSize<Info>;
  return {[=, this](const Item&, std::uint64_t at) {
            return EndOfEntries(at + kInfo, Number<Info>(count_name, at).value, size);
          },
          [=, this](const Item& item, std::uint32_t number) {
            std::uint64_t end = 0;
            AddWhole(parts.group, item.at, number, [&] {
              Add(parts.info, item.at, kInfo);
              end = AddEntries(parts.entries, item.at + kInfo, Number<Info>(count_name, item.at),
                               0xFF, size, item.fit);
            });
            return end;
          }};
}

IndexWalk::ItemKind TableWalk::StillGroups() {
  return GroupsOf<tag_S_VOG_GI>({Part::kStillGroup, Part::kGroupInfo, Part::kStillEntries},
                                "S_VOB_Ns", StillEntrySize);
}

IndexWalk::ItemKind TableWalk::AudioGroups() {
  return GroupsOf<tag_S_AAG_GI>({Part::kAudioGroup, Part::kAudioGroupInfo, Part::kAudioEntries},
                                "AA_ENT_Ns", AudioEntrySize);
}

/// True when the header of the table places an index of audio groups that stands in order, with its
/// streams from `streams_at` on.
bool TableWalk::AudioStandsAsStated(std::uint64_t table, std::uint64_t streams_at,
                                    const Room& room) {
  const std::uint64_t streams = Number<tag_S_AVFITI>("S_A_ATR_Ns", table).value;
  const Index index = AudioIndex(table, streams_at + kFileSize<tag_S_A_ATR> * streams);
  return Number<tag_S_AVFITI>("S_AAFI_Ns", table).value == 1 &&
         ImpliedCount(index, room.next) == index.count.value;
}

/// Finds what stands behind the still groups, which no address names: the one place at which an
/// index of audio groups stands in order, and the streams before it.
TableWalk::AudioPart TableWalk::FindAudioPart(std::uint64_t table, std::uint64_t from,
                                              const Room& room) {
  AudioPart part;
  part.table = table;
  part.streams = Number<tag_S_AVFITI>("S_A_ATR_Ns", table);
  part.presence = Number<tag_S_AVFITI>("S_AAFI_Ns", table);
  const std::uint64_t end = std::min(room.next, FileEnd());
  int found = 0;
  for (std::uint64_t at = from; at < end; ++at) {
    Spend(1);
    const Index index = AudioIndex(table, at);
    if (ImpliedCount(index, room.next) != index.count.value) continue;
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

Index TableWalk::AudioIndex(std::uint64_t table, std::uint64_t at) const {
  return AvIndex(Part::kAudioIndex, Part::kAudioGroup,
                 kFileSize<tag_S_AAG_GI> + kFileSize<tag_AA_ENT>, "S_AAGI_SA",
                 Number<tag_S_AAFI_GI>("S_AAGI_SRP_Ns", at), table);
}

/// Maps what was found. `groups_end` is the end of the still groups, if it is known.
std::uint64_t TableWalk::WalkAudioPart(AudioPart part, std::optional<std::uint64_t> groups_end,
                                       const Room& room) {
  constexpr std::uint64_t kSize = kFileSize<tag_S_A_ATR>;
  std::uint64_t at = groups_end ? *groups_end : part.streams_at;
  if (part.index_at && at != part.streams_at) {
    const std::uint64_t between = *part.index_at - at;
    if (at <= *part.index_at && between % kSize == 0 && between / kSize <= 0xFF) {
      ReportCount(part.streams, between / kSize);
      part.streams.value = between / kSize;
    } else {
      at = part.streams_at;
    }
  }
  if (at == 0) {
    if (part.streams.value == 0 && part.presence.value == 0) return 0;
    Report(Code::kAddressOutside, part.streams.offset, PathOf(Part::kAudioStreams),
           "they stand after the still groups, whose size is not known");
    AddLost(Part::kAudioStreams, 0);
    return 0;
  }
  const std::uint64_t end = AddRun(Part::kAudioStreams, at, part.streams);
  const Index index = AudioIndex(part.table, at + kSize * part.streams.value);
  return IsPresent(part.presence, index, room) ? WalkIndex(index, room, AudioGroups()) : end;
}

}  // namespace veska_tool
