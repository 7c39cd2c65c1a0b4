// Cell numbers and programs stay in step with the cells, whatever is done to the original chain.
#include <chain_editor.h>
#include <gtest/gtest.h>
#include <renumber.h>
#include <veska/veska.h>

#include <algorithm>
#include <array>
#include <random>

#include "round_trip.h"

namespace {

using namespace VESKA;
using veska_tool::ChainEditor;
using veska_tool::kNoCell;
using veska_tool::Renumber;

/// What a cell point says: the cell, by the id that the test gave it (0 for none), and the bytes of
/// the position in the file.
struct Point {
  int cell = 0;
  std::array<unsigned char, 6> position{};
  bool operator==(const Point&) const = default;
};

/// A file as the operations are meant to leave it.
struct Model {
  std::vector<std::vector<int>> programs;  // the ids of each program's cells
  std::vector<int> others;                 // those behind the last program's
  std::vector<Point> program_points;
  std::vector<Point> fixed_points;  // of the header, the play lists and the user-defined chains
  bool operator==(const Model&) const = default;

  std::vector<int>& RunOf(int id) {
    for (auto& program : programs) {
      if (std::count(program.begin(), program.end(), id) != 0) return program;
    }
    return others;
  }
  void Forget(int id) {
    std::vector<int>& run = RunOf(id);
    run.erase(std::find(run.begin(), run.end(), id));
  }
  void LosePoints(int id) {
    for (auto* points : {&program_points, &fixed_points}) {
      for (Point& point : *points) point.cell = point.cell == id ? 0 : point.cell;
    }
  }
};

/// The number that stands at the same place in cells of both kinds.
int IdOf(tag_C_ITEM* item) {
  if (item == nullptr) return 0;
  return item->CI->GetType() == CELL_MOVIE
             ? static_cast<CMovieCell*>(item->CI)->GetHeader().number_2
             : static_cast<CStillCell*>(item->CI)->GetHeader().number_2;
}

/// Reads the model off the object and, for the positions, off the image that it writes.
Model ModelOf(CVMGInfo& info) {
  info.AutoComplete();
  const std::vector<unsigned char> image = round_trip::ImageOf(info);
  CPGCInfo& chain = info.GetOriginalPGC();
  const auto point = [&](const tag_CELL_POINT& cell_point, unsigned long position) {
    Point result{cell_point.cell == kNoCell ? 0 : IdOf(chain.GetCellNode(cell_point.cell - 1)), {}};
    std::copy_n(image.begin() + static_cast<long>(position), 6, result.position.begin());
    return result;
  };

  Model model;
  const tag_VMGI_MAT_HEADER& header = info.GetMAT().GetHeader();
  model.fixed_points = {point(header.cell_point_70, 72), point(header.cell_point_85, 87)};
  CPlayListSRPTable& play_lists = info.GetMAT().GetPlayListTable();
  for (int i = 0; i < play_lists.GetCount(); ++i)
    model.fixed_points.push_back(
        point(play_lists[i]->cell_point, 520 + 146 * static_cast<unsigned long>(i) + 140));
  tag_UD_PGCI_ITEM* user_chain = info.GetUserPGCTable()[0];
  for (int i = 0; i < user_chain->UD_PGCI.GetPGCount(); ++i)
    model.fixed_points.push_back(point(user_chain->UD_PGCI.GetPGNode(i)->cell_point,
                                       header.UD_PGCIT_SA + user_chain->UD_PGCI_SA + 4UL +
                                           142 * static_cast<unsigned long>(i) + 136));

  int cell = 0;
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    tag_PGI* program = chain.GetPGNode(i);
    model.program_points.push_back(point(
        program->cell_point, header.ORG_PGCI_SA + 4UL + 142 * static_cast<unsigned long>(i) + 136));
    model.programs.emplace_back();
    for (int n = 0; n < program->C_Ns; ++n)
      model.programs.back().push_back(IdOf(chain.GetCellNode(cell++)));
  }
  while (cell < chain.GetCellCount()) model.others.push_back(IdOf(chain.GetCellNode(cell++)));
  return model;
}

class RandomFile {
 public:
  explicit RandomFile(unsigned seed) : random_(seed) {
    CPGCInfo& chain = info_.GetOriginalPGC();
    const int cells = Below(30);
    for (int id = 1; id <= cells; ++id) {
      if (Below(2) == 0) {
        AddCell<CMovieCell>(CELL_MOVIE, id);
      } else {
        AddCell<CStillCell>(CELL_STILL, id);
      }
    }
    const auto fill = [&](tag_CELL_POINT& point) {
      const int odd[] = {0, kNoCell, cells + 1, cells + 2 + Below(9), 0xFFFE};
      point.cell = static_cast<std::uint16_t>(cells == 0 || Below(4) == 0 ? odd[Below(5)]
                                                                          : 1 + Below(cells));
      point.position = static_cast<std::uint32_t>(random_());
      point.position_ext = static_cast<std::uint16_t>(random_());
    };
    const int count = Below(8);
    for (int i = 0, left = cells; i < count; ++i) {
      tag_PGI* program = chain.AddPGNode();
      program->C_Ns = static_cast<std::uint16_t>(Below(left + 1));
      left -= program->C_Ns;
      fill(program->cell_point);
    }
    fill(info_.GetMAT().GetHeader().cell_point_70);
    fill(info_.GetMAT().GetHeader().cell_point_85);
    for (int i = 0; i < 5; ++i) fill(info_.GetMAT().GetPlayListTable().AddNode()->cell_point);
    CPGCInfo& user_chain = info_.GetUserPGCTable().AddNode()->UD_PGCI;
    user_chain.AddCellNode(CELL_MOVIE);
    for (int i = 0; i < 3; ++i) fill(user_chain.AddPGNode()->cell_point);
    model_ = ModelOf(info_);
  }

  /// Does something at random to the file and to the model of it, which then are to agree.
  void Step() {
    std::vector<std::string> notes;
    ChainEditor editor(info_, notes);
    const int operation = 1 + Below(6);
    const int programs = editor.ProgramCount();
    const int cells = editor.CellCount();
    const int program = programs == 0 ? 0 : Below(programs);
    const int cell = cells == 0 ? 0 : Below(cells);
    if (operation == 1 && cells > 0) {
      Drop(IdAt(cell));
      editor.DeleteCell(cell);
    } else if (operation == 2 && cells > 0) {
      MoveCell(editor, cell, Below(cells));
    } else if (operation == 3 && programs > 0) {
      const std::vector<int> ids = model_.programs[Index(program)];
      for (const int id : ids) Drop(id);
      model_.programs.erase(model_.programs.begin() + program);
      model_.program_points.erase(model_.program_points.begin() + program);
      editor.DeleteProgram(program);
    } else if (operation == 4 && programs > 0) {
      const int to = Below(programs);
      Move(model_.programs, program, to);
      Move(model_.program_points, program, to);
      editor.MoveProgram(program, to);
    } else if (operation == 5 && programs > 0 && model_.programs[Index(program)].size() > 1) {
      SplitProgram(editor, program);
    } else if (operation == 6 && program + 1 < programs) {
      std::vector<int>& next = model_.programs[Index(program) + 1];
      std::vector<int>& run = model_.programs[Index(program)];
      run.insert(run.end(), next.begin(), next.end());
      model_.programs.erase(model_.programs.begin() + program + 1);
      model_.program_points.erase(model_.program_points.begin() + program + 1);
      editor.JoinPrograms(program);
    }
    EXPECT_EQ(ModelOf(info_), model_) << "after operation " << operation;
  }

 private:
  static std::size_t Index(int i) { return static_cast<std::size_t>(i); }
  int Below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
  int IdAt(int cell) { return IdOf(info_.GetOriginalPGC().GetCellNode(cell)); }

  template <class Cell>
  void AddCell(tag_CELL_TYPE type, int id) {
    auto* cell = static_cast<Cell*>(info_.GetOriginalPGC().AddCellNode(type)->CI);
    cell->GetHeader().number_2 = static_cast<std::uint16_t>(id);
  }

  void Drop(int id) {
    model_.Forget(id);
    model_.LosePoints(id);
  }

  template <class Value>
  static void Move(std::vector<Value>& values, int from, int to) {
    const Value value = values[Index(from)];
    values.erase(values.begin() + from);
    values.insert(values.begin() + to, value);
  }

  void MoveCell(ChainEditor& editor, int cell, int to) {
    const int id = IdAt(cell);
    const int there = IdAt(to);
    if (cell != to) {
      model_.Forget(id);
      std::vector<int>& run = model_.RunOf(there);
      const auto place = std::find(run.begin(), run.end(), there);
      run.insert(to > cell ? place + 1 : place, id);
    }
    editor.MoveCell(cell, to);
  }

  void SplitProgram(ChainEditor& editor, int program) {
    std::vector<int>& run = model_.programs[Index(program)];
    const int at = 1 + Below(static_cast<int>(run.size()) - 1);
    const std::vector<int> second(run.begin() + at, run.end());
    run.resize(Index(at));
    model_.programs.insert(model_.programs.begin() + program + 1, second);
    const Point point = model_.program_points[Index(program)];
    const bool goes_along = std::count(second.begin(), second.end(), point.cell) != 0;
    model_.program_points.insert(model_.program_points.begin() + program + 1,
                                 goes_along ? point : Point());
    if (goes_along) model_.program_points[Index(program)] = Point();
    ASSERT_TRUE(editor.SplitProgram(program, editor.FirstCell(program) + at));
  }

  std::mt19937 random_;
  CVMGInfo info_;
  Model model_;
};

TEST(Renumber, EveryReferenceKeepsItsCellThroughAnyEdits) {
  for (unsigned seed = 0; seed < 200 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    RandomFile file(seed);
    for (int i = 0; i < 40 && !HasFailure(); ++i) file.Step();
  }
}

TEST(Renumber, TellsWhatLostItsCell) {
  CVMGInfo info;
  for (int i = 0; i < 3; ++i) info.GetOriginalPGC().AddCellNode(CELL_MOVIE);
  info.GetOriginalPGC().AddPGNode()->cell_point.cell = 1;
  info.GetMAT().GetHeader().cell_point_85.cell = 2;
  info.GetMAT().GetPlayListTable().AddNode()->cell_point.cell = 3;
  info.GetMAT().GetPlayListTable().AddNode()->cell_point.cell = 4;
  info.GetUserPGCTable().AddNode()->UD_PGCI.AddPGNode()->cell_point.cell = 2;
  const std::vector<veska_tool::LostReference> expected = {{"header, cell point at 85", 2},
                                                           {"user chain 1, program 1", 2}};
  EXPECT_EQ(Renumber(info, {2, 0}), expected);
  EXPECT_EQ(info.GetMAT().GetPlayListTable()[0]->cell_point.cell, 1);
  EXPECT_EQ(info.GetOriginalPGC().GetPGNode(0)->cell_point.cell, 2);
  EXPECT_EQ(info.GetMAT().GetPlayListTable()[1]->cell_point.cell, 4);
}

TEST(Renumber, TheLastCellThatAChainCanHoldHasNoNumber) {
  CVMGInfo info;
  for (int i = 0; i < 0xFFFF; ++i) info.GetOriginalPGC().AddCellNode(CELL_MOVIE);
  info.GetMAT().GetHeader().cell_point_70 = {.cell = 1, .position = 0x01020304, .position_ext = 5};
  std::vector<std::string> notes;
  ChainEditor(info, notes).MoveCell(0, 0xFFFE);
  EXPECT_EQ(info.GetMAT().GetHeader().cell_point_70.cell, kNoCell);
  EXPECT_EQ(notes,
            std::vector<std::string>{"header, cell point at 70 named cell 1: it names none now"});
  info.AutoComplete();
  const std::vector<unsigned char> image = round_trip::ImageOf(info);
  EXPECT_EQ(std::vector(image.begin() + 70, image.begin() + 78),
            (std::vector<unsigned char>{0xFF, 0xFF, 1, 2, 3, 4, 0, 5}));
}

TEST(ChainEditor, CountsOnlyCellsThatThereAre) {
  CVMGInfo info;
  CPGCInfo& chain = info.GetOriginalPGC();
  for (int i = 0; i < 5; ++i) chain.AddCellNode(CELL_MOVIE);
  for (const int count : {2, 0xFFFF, 7})
    chain.AddPGNode()->C_Ns = static_cast<std::uint16_t>(count);
  std::vector<std::string> notes;
  ChainEditor editor(info, notes);
  EXPECT_EQ(notes,
            (std::vector<std::string>{"program 2 counted 65535 cells where 3 are left: now 3",
                                      "program 3 counted 7 cells where 0 are left: now 0"}));
  editor.MoveProgram(1, 0);
  EXPECT_EQ(chain.GetPGNode(0)->C_Ns, 3);
  EXPECT_EQ(chain.GetPGNode(1)->C_Ns, 2);
  EXPECT_EQ(chain.GetPGNode(2)->C_Ns, 0);
}

}  // namespace
