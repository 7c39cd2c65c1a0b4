// Text data and manufacturer information.
#include <cstring>

#include "support/image_builder.h"

namespace VESKA {
namespace {

/// A record for SetNode; its bytes stay the caller's.
tag_IT_TXT TextRecord(unsigned code, Bytes& text) {
  return {static_cast<std::uint8_t>(code), static_cast<std::uint8_t>(text.size()), text.data()};
}

const Bytes kTexts = Hex("01 03 414243 02 00");

TEST(TextSet, HoldsNoMoreRecordsThanAListCan) {
  CTextSet set;
  Bytes image = Zeros(2 * 0x10000);
  EXPECT_TRUE(set.Parse(image.data(), 2 * 0xFFFF));
  EXPECT_EQ(set.GetCount(), 0xFFFF);
  EXPECT_FALSE(set.Parse(image.data(), 2 * 0x10000));
}

TEST(TextSet, IsReadAndWrittenRecordByRecord) {
  CTextSet set, copy;
  EXPECT_TRUE(set.IsEmpty());
  Parse(set, kTexts, 7UL);
  ASSERT_EQ(set.GetCount(), 2);
  EXPECT_FALSE(set.IsEmpty());
  EXPECT_EQ(Bytes(set[0]->text, set[0]->text + set[0]->length), Hex("414243"));
  EXPECT_EQ(+set[1]->text, nullptr);
  EXPECT_EQ(Completed(set), kTexts);
  copy = set;
  set[0]->text[0] = 0;
  set.DeleteNode(0);
  EXPECT_EQ(Written(copy), kTexts);
  for (const unsigned long size : {0UL, 1UL, 5UL, 6UL}) {  // the last record is read whole
    Parse(set, kTexts, size);
    EXPECT_EQ(Written(set), kTexts.Part(0, size == 0 ? 0 : size == 6 ? 7 : 5)) << size;
  }
}

// A set is written in one piece as long as it is what was read.
TEST(TextSet, IsWrittenAsItStandsAfterEachEdit) {
  const Bytes read = Hex("01 03 414243 02 00 03 01 44");
  Bytes other = Hex("5859");
  const struct {
    void (*edit)(CTextSet&, Bytes&);
    Bytes written;
  } cases[] = {
      {[](CTextSet&, Bytes&) {}, read},
      {[](CTextSet& set, Bytes&) { set[1]->code = 9; }, Hex("01 03 414243 09 00 03 01 44")},
      {[](CTextSet& set, Bytes&) { set[0]->text[1] = 0x7A; }, Hex("01 03 417A43 02 00 03 01 44")},
      {[](CTextSet& set, Bytes&) { set[0]->length = 2; }, Hex("01 02 4142 02 00 03 01 44")},
      {[](CTextSet& set, Bytes&) { set.DeleteNode(2); }, Hex("01 03 414243 02 00")},
      {[](CTextSet& set, Bytes&) { set.DeleteNode(0); }, Hex("02 00 03 01 44")},
      {[](CTextSet& set, Bytes&) { set.AddNode(); }, read + Hex("00 00")},
      {[](CTextSet& set, Bytes&) { set.InsertNode(1); }, Hex("01 03 414243 00 00 02 00 03 01 44")},
      {[](CTextSet& set, Bytes& text) { set.SetNode(1, TextRecord(2, text)); },
       Hex("01 03 414243 02 02 5859 03 01 44")}};
  for (const auto& test : cases) {
    CTextSet set;
    Parse(set, read, static_cast<unsigned long>(read.size()));
    test.edit(set, other);
    EXPECT_EQ(Written(set), test.written);
    CTextSet copy = set;
    EXPECT_EQ(Written(copy), test.written);
  }
}

TEST(TextSet, SetNodeMakesAnIndependentCopy) {
  CTextSet set;
  Parse(set, kTexts, 7UL);
  Bytes text = Hex("585960"), none;
  set.SetNode(0, TextRecord(9, text));  // of the same length, and then of others
  text[0] = 0;
  EXPECT_EQ(Written(set), Hex("09 03 585960 02 00"));
  text = Hex("61626364");
  set.SetNode(1, TextRecord(8, text));
  for (const int out : {-1, 2, 1000}) set.SetNode(out, TextRecord(1, text));
  text[0] = 0;
  EXPECT_EQ(Written(set), Hex("09 03 585960 08 04 61626364"));
  set.SetNode(0, TextRecord(7, none));
  EXPECT_EQ(+set[0]->text, nullptr);

  Parse(set, kTexts, 7UL);  // what is its own, whole and in part
  set.SetNode(0, *set[0]);
  set.SetNode(1, *set[0]);
  EXPECT_EQ(Written(set), Hex("01 03 414243 01 03 414243"));
  tag_IT_TXT part = *set[0];
  part.text += 1;
  part.length = 2;
  set.SetNode(0, part);
  set.SetNode(1, part = {5, 2, set[1]->text + 1});
  EXPECT_EQ(Written(set), Hex("01 02 4243 05 02 4243"));
}

TEST(TextManager, HoldsSetsByAddressAndSize) {
  const Bytes ten = Hex("01 08") + Text("ABCDEFGH", 8);
  const Bytes image = Hex("11 77 0002 00000019  0010 000A  001A 0000") + ten;
  ExpectRoundTrip<CTextDataMgr>(image);
  CTextDataMgr texts;
  Parse(texts, Hex("11 77 0002 00000099  0013 000A  0000 0000") + Ramp(3) + ten);
  EXPECT_EQ(texts[0]->IT_TXT_SA, 0x13);
  EXPECT_EQ(Completed(texts), image);
  EXPECT_EQ(texts[0]->IT_TXT_SZ, 10);

  texts.Clear();
  texts.SetCharSet(0x21);
  EXPECT_EQ(Completed(texts), Bytes());
  EXPECT_EQ(+texts.GetHeader().TXTDT_MG_EA, 7U);
  for (int i = 0; i < 3; ++i) texts.AddNode()->IT_TXT.AddNode()->code = 1;
  EXPECT_EQ(texts.GetDataSize(), 8U);
  EXPECT_EQ(Completed(texts).size(), 8U + 12 + 6);
  texts.DeleteNode(0);
  EXPECT_EQ(texts.GetDataSize(), 26U);
  EXPECT_EQ(Completed(texts), Hex("21 00 0002 00000013  0010 0002  0012 0002  01 00  01 00"));
}

tag_A_MNFI Manufacturer(unsigned char id, Bytes& data) {
  tag_A_MNFI record{};
  std::memset(record.MNF_ID, id, sizeof record.MNF_ID);
  std::memcpy(record.MNF_FIELD_32, "wxyz", 4);
  record.MNF_FIELD_36 = id;
  record.MNF_DATA_SZ = static_cast<std::uint32_t>(data.size());
  record.MNF_DATA = data.data();
  return record;
}
Bytes Item(unsigned char id, const Bytes& data) {
  return Bytes(32, id) + Text("wxyz", 4) + Byte(id) + data;
}

TEST(Manufacturers, LengthsFollowFromTheAddresses) {
  const Bytes ten = Ramp(10, 0xA0);
  const Bytes image =
      Word(2) + Long(125) + Ramp(32) + Word(42) + Word(89) + Item(1, ten) + Item(2, {});
  ExpectRoundTrip<CMNFInfoTable>(image);
  CMNFInfoTable table;
  Parse(table, image);
  ASSERT_EQ(+table[0]->A_MNFI.MNF_DATA_SZ, 10U);
  EXPECT_EQ(Bytes(table[0]->A_MNFI.MNF_DATA, table[0]->A_MNFI.MNF_DATA + 10), ten);
  EXPECT_EQ(+table[1]->MNFI_SA, 89);
  EXPECT_EQ(+table[1]->A_MNFI.MNF_DATA, nullptr);
}

TEST(Manufacturers, ANegativeLengthIsAnEmptyBlockOrAFailedBoundedLoad) {
  const Bytes backwards =
      Word(2) + Long(115) + Zeros(32) + Word(79) + Word(42) + Item(2, {}) + Item(1, {});
  const Bytes end_short = Word(1) + Long(40 + 35) + Zeros(32) + Word(40) + Item(1, {});
  for (const Bytes& image : {backwards, end_short}) {
    CMNFInfoTable table;
    Parse(table, image);
    EXPECT_EQ(table[0]->A_MNFI.MNF_ID[0], 1);
    EXPECT_EQ(+table[0]->A_MNFI.MNF_DATA, nullptr);
    File file;
    file.manufacturers = image;
    CVMGInfo info;
    EXPECT_FALSE(Load(info, file.Image()));
  }
}

TEST(Manufacturers, SetNodeMakesAnIndependentCopyAndKeepsTheAddress) {
  CMNFInfoTable table;
  Bytes id = Ramp(32, 7), ten = Ramp(10), five = Ramp(5), none;
  table.SetLastMNFID(id.data());
  EXPECT_EQ(Completed(table), Bytes());
  EXPECT_EQ(+table.GetHeader().MNFIT_EA, 37U);
  table.AddNode();
  table.AddNode();
  EXPECT_EQ(table.GetDataSize(), 38U);
  table.SetNode(0, Manufacturer(1, ten));
  table.AutoComplete();
  EXPECT_EQ(table.GetDataSize(), 126U);
  table.SetNode(0, Manufacturer(3, five));
  table.SetNode(1, table[0]->A_MNFI);
  table.SetNode(0, table[0]->A_MNFI);
  for (const int out : {-1, 2}) table.SetNode(out, Manufacturer(9, ten));
  five[0] = 99;
  EXPECT_EQ(+table[1]->MNFI_SA, 89);
  EXPECT_EQ(table.GetDataSize(), 126U);
  EXPECT_EQ(Completed(table), Word(2) + Long(125) + Ramp(32, 7) + Word(42) + Word(84) +
                                  Item(3, Ramp(5)) + Item(3, Ramp(5)));
  table[0]->A_MNFI.MNF_DATA[0] = 77;
  table.SetNode(1, Manufacturer(4, none));
  EXPECT_EQ(+table[1]->A_MNFI.MNF_DATA, nullptr);
  table.DeleteNode(0);
  EXPECT_EQ(Completed(table), Word(1) + Long(76) + Ramp(32, 7) + Word(40) + Item(4, {}));
}

}  // namespace
}  // namespace VESKA
