// What inputs stand for: folders and images of discs, sound and broken, made by the test.
#include "input.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/image_builder.h"
#include "support/temporary_folder.h"
#include "support/tool_run.h"

namespace {

using VESKA::Bytes;
using VESKA::ReadFile;
using VESKA::Sample;
using veska_tool::ExitStatus;
using veska_tool::Failure;
using veska_tool::Input;
using veska_tool::InputOptions;

namespace fs = std::filesystem;

constexpr std::size_t kSector = 2048;

/// The first input that an argument stands for, or none with the reason in its name.
Input Read(const fs::path& path, const InputOptions& options = {}) {
  try {
    return veska_tool::ReadInputs(veska_tool::NameOf(path), options).front();
  } catch (const Failure& failure) {
    return {.name = failure.what()};
  }
}

void Put(const fs::path& file, const Bytes& bytes) {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

const Bytes kOne = Sample("movie_recorder");
const Bytes kOther = Sample("still_camera");
const Bytes kCut(kOne.begin(), kOne.begin() + 5000);

TEST(Input, AFolderIsSearchedWhateverTheCaseAndItsBackupServes) {
  const struct {
    std::vector<std::pair<const char*, Bytes>> files;
    Bytes expected;
    bool is_backup;
    const char* says;  // in its notes, or why there is none
  } cases[] = {
      {{{"DVD_RTAV/VR_MANGR.IFO", kOne}, {"DVD_RTAV/VR_MANGR.BUP", kOther}}, kOne, false, ""},
      {{{"dvd_rtav/vr_mangr.ifo", kOne}}, kOne, false, ""},
      {{{"Dvd_Rtav/Vr_Mangr.Bup", kOne}}, kOne, true, "no such file"},
      {{{"VR_MANGR.IFO", kOne}}, kOne, false, ""},  // the folder of the recordings itself
      {{{"DVD_RTAV/VR_MANGR.IFO", kCut}, {"DVD_RTAV/VR_MANGR.BUP", kOther}},
       kOther,
       true,
       "damaged"},
      {{{"DVD_RTAV/VR_MANGR.IFO", kCut}, {"DVD_RTAV/VR_MANGR.BUP", {}}}, kCut, false, ""},
      {{{"DVD_RTAV/VR_MOVIE.VRO", kOne}}, {}, false, "holds no DVD_RTAV/VR_MANGR.IFO"},
  };
  for (const auto& test : cases) {
    const TemporaryFolder folder;
    for (const auto& [name, bytes] : test.files) Put(folder / name, bytes);
    const Input input = Read(folder);
    const std::string said = input.notes.empty() ? input.name : input.notes.front().what;
    EXPECT_EQ(input.bytes, test.expected) << test.files.front().first;
    EXPECT_EQ(input.is_backup, test.is_backup);
    EXPECT_NE(said.find(test.says), std::string::npos) << said;
  }
}

/// Management files in an image without a file system, each at the start of a sector.
Bytes Scattered(std::size_t sectors, const std::vector<std::pair<std::size_t, Bytes>>& files) {
  Bytes image(sectors * kSector);
  for (std::size_t i = 0; i < image.size(); ++i) image[i] = static_cast<unsigned char>(i * 7);
  for (const auto& [sector, bytes] : files) {
    const auto at = static_cast<std::ptrdiff_t>(sector * kSector);
    const auto size = std::min(bytes.size(), image.size() - sector * kSector);
    std::copy_n(bytes.begin(), size, image.begin() + at);
  }
  return image;
}

TEST(Input, AnImageWithoutFileSystemIsSearchedForGenerationsOfTheFile) {
  const TemporaryFolder folder;
  // The second one begins in the last sector of the first 4 MB that are read together.
  const Bytes bytes =
      Scattered(4000, {{3, kCut}, {2047, kOne}, {2500, kOther}, {3000, kOne}, {3999, kOther}});
  const fs::path image = folder.Write("disc.img", bytes);
  const ToolRun found = RunTool({"locate", veska_tool::NameOf(image)});
  EXPECT_EQ(found.status, ExitStatus::kDone) << found.err;
  for (const char* line :
       {": 1: at byte 6144, 13088 bytes, damaged", ": 2: at byte 4192256, 13088 bytes, sound\n",
        ": 3: at byte 5120000, 2635 bytes, sound\n",
        ": 4: at byte 6144000, 13088 bytes, sound, the same as 2",
        ": 5: at byte 8189952, 2048 bytes, damaged"}) {
    EXPECT_NE(found.out.find(line), std::string::npos) << line << "\n" << found.out;
  }

  const Input first = Read(image);  // the first sound one
  EXPECT_EQ(first.bytes, kOne);
  ASSERT_EQ(first.notes.size(), 1U);
  EXPECT_NE(first.notes.front().what.find("4 different"), std::string::npos)
      << first.notes.front().what;
  EXPECT_EQ(Read(image, {.at = 5120000}).bytes, kOther);
  EXPECT_EQ(Read(image, {.at = 5120001}).name, "no management file begins at byte 5120001");
  EXPECT_EQ(veska_tool::ReadInputs(veska_tool::NameOf(image), {.all = true}).size(), 4U);
}

TEST(Input, AFileIsAnImageByWhatItHoldsOnly) {
  const TemporaryFolder folder;
  Bytes large = kOne;  // a management file of any size is one
  large.resize(3 << 20U);
  Bytes unknown = large;
  unknown[0] = 'X';
  Bytes small = kOne;
  small[0] = 'X';
  EXPECT_EQ(Read(folder.Write("large", large)).bytes, large);
  EXPECT_EQ(Read(folder.Write("small", small)).bytes, small);
  EXPECT_EQ(Read(folder.Write("unknown", unknown)).name,
            "holds no management file in any of its sectors");
  EXPECT_EQ(Read(folder.Write("one", kOne), {.scan = true}).bytes, kOne);
}

#ifdef VESKA_HAVE_UDFREAD

/// An image with a UDF file system that holds some files; empty when it cannot be made.
Bytes UdfImage(const TemporaryFolder& folder,
               const std::vector<std::pair<const char*, Bytes>>& files) {
  for (const auto& [name, bytes] : files) Put(folder / "root" / name, bytes);
  const fs::path image = folder / "made.iso";
  const std::string command = "genisoimage -quiet -udf -o '" + image.string() + "' '" +
                              (folder / "root").string() + "' 2>/dev/null";
  return std::system(command.c_str()) == 0 ? ReadFile(image.string()) : Bytes();
}

std::size_t SectorOf(const Bytes& image, const Bytes& file) {
  for (std::size_t at = 0; at + file.size() <= image.size(); at += kSector) {
    if (std::equal(file.begin(), file.end(), image.begin() + static_cast<std::ptrdiff_t>(at))) {
      return at / kSector;
    }
  }
  return 0;
}

std::uint32_t LittleEndian(const Bytes& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 4; i-- > 0;) value = value << 8U | bytes[at + i];
  return value;
}
void SetLittleEndian(Bytes& bytes, std::size_t at, std::size_t value) {
  for (unsigned i = 0; i < 4; ++i) bytes[at + i] = static_cast<unsigned char>(value >> 8 * i);
}

/// Moves all but the first two sectors of a file to `other`, and tells its file entry (ECMA-167
/// 4/14.9): a second short allocation descriptor.
void Split(Bytes& image, const Bytes& file, std::size_t other) {
  constexpr std::size_t kFirst = 2 * kSector;
  const std::size_t from = SectorOf(image, file);
  const auto moved = static_cast<std::ptrdiff_t>(from * kSector + kFirst);
  std::copy_n(image.begin() + moved, file.size() - kFirst,
              image.begin() + static_cast<std::ptrdiff_t>(other * kSector));
  std::fill_n(image.begin() + moved, file.size() - kFirst, static_cast<unsigned char>(0xEE));
  bool is_told = false;
  for (std::size_t at = 0; at < image.size(); at += kSector) {
    const bool is_entry = image[at] == 5 && image[at + 1] == 1;  // tag 261
    if (!is_entry || LittleEndian(image, at + 56) != file.size()) continue;
    const std::size_t descriptor = at + 176 + LittleEndian(image, at + 168);
    const std::uint32_t position = LittleEndian(image, descriptor + 4);
    SetLittleEndian(image, at + 172, 16);
    SetLittleEndian(image, descriptor, kFirst);
    SetLittleEndian(image, descriptor + 8, file.size() - kFirst);
    SetLittleEndian(image, descriptor + 12, position + other - from);
    is_told = true;
  }
  ASSERT_TRUE(is_told);
}

TEST(Input, AnImageIsReadThroughItsFileSystem) {
  const TemporaryFolder folder;
  const Bytes movie(600 * kSector,
                    0x55);  // an image is known by its size where its file system is gone
  const Bytes whole = UdfImage(folder, {{"DVD_RTAV/VR_MANGR.IFO", kOne},
                                        {"DVD_RTAV/VR_MANGR.BUP", kOther},
                                        {"DVD_RTAV/VR_MOVIE.VRO", movie}});
  if (whole.empty()) GTEST_SKIP() << "genisoimage is not here";
  const std::size_t first = SectorOf(whole, kOne);
  const std::size_t backup = SectorOf(whole, kOther);
  ASSERT_NE(first * backup, 0U);
  const auto read = [&](const Bytes& image) { return Read(folder.Write("disc.iso", image)); };
  const auto damage = [&whole](std::size_t from, std::size_t to) {  // in sectors
    Bytes image = whole;
    std::fill(image.begin() + static_cast<std::ptrdiff_t>(from * kSector),
              image.begin() + static_cast<std::ptrdiff_t>(to * kSector), std::uint8_t{0});
    return image;
  };

  EXPECT_EQ(read(whole).bytes, kOne);
  EXPECT_NE(read(whole).name.find("disc.iso:DVD_RTAV/VR_MANGR.IFO"), std::string::npos);

  Bytes in_two = whole;
  ASSERT_NO_FATAL_FAILURE(Split(in_two, kOne, SectorOf(whole, movie)));
  EXPECT_EQ(read(in_two).bytes, kOne);

  const Input from_backup = read(damage(first, first + 1));
  EXPECT_EQ(from_backup.bytes, kOther);
  EXPECT_TRUE(from_backup.is_backup);

  const Input without_file_system = read(damage(0, std::min(first, backup)));
  EXPECT_EQ(without_file_system.bytes, first < backup ? kOne : kOther);

  Bytes cut = whole;  // within the management file that stands last
  cut.resize(std::max(first, backup) * kSector + 1000);
  EXPECT_EQ(read(cut).bytes, first < backup ? kOne : kOther);
}

TEST(Input, NothingIsWrittenIntoAnImage) {
  const TemporaryFolder folder;
  const Bytes whole = UdfImage(folder, {{"DVD_RTAV/VR_MANGR.IFO", kOne}});
  if (whole.empty()) GTEST_SKIP() << "genisoimage is not here";
  Bytes gone = whole;
  std::fill_n(gone.begin(), 200 * kSector, std::uint8_t{0});
  gone.resize(1 << 21U);
  for (const Bytes& image : {whole, gone}) {
    const std::string name = veska_tool::NameOf(folder.Write("disc.iso", image));
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"complete", name, "-o", name, "--force"},
          {"edit", name, "--in-place", "delete-cell", "1"},
          {"edit", name, "-o", name, "--force", "delete-cell", "1"},
          {"export", name, "-o", name, "--force"},
          {"report", name, "-o", name, "--force"}}) {
      EXPECT_NE(RunTool(arguments).status, ExitStatus::kDone) << arguments.front();
      EXPECT_EQ(ReadFile(name), image) << arguments.front();
    }
    EXPECT_FALSE(fs::exists(name + ".bak"));
  }
}

#endif

}  // namespace
