// Cell numbers and programs stay in step with the cells, whatever is done to the original chain.
#include "edit/renumber.h"

#include <gtest/gtest.h>
#include <veska/veska.h>

#include <algorithm>
#include <random>

#include "basis/cell_points.h"
#include "basis/text.h"
#include "edit/chain_editor.h"
#include "support/image_builder.h"

namespace {

using namespace VESKA;
using VESKA::workshop::ChainEditor;
using VESKA::workshop::Renumber;

/// A program as the operations are meant to leave it: the ids of its cells, which the test gave
/// them, and of the cell that its cell point names, 0 for none.
struct Program {
  std::vector<int> cells;
  int point = 0;
  bool operator==(const Program&) const = default;
};

bool HasCell(const Program& program, int id) {
  return std::find(program.cells.begin(), program.cells.end(), id) != program.cells.end();
}

struct Model {
  std::vector<Program> programs;  // the last one has the cells that are in none
  std::vector<int> points;        // of the header and the play lists
  std::vector<int> user_numbers;  // as they stand, since they count other cells
  bool operator==(const Model&) const = default;

  std::vector<int>& RunOf(int id) {
    const auto has = [id](const Program& program) { return HasCell(program, id); };
    return std::find_if(programs.begin(), programs.end(), has)->cells;
  }
  void Drop(int id) {
    std::erase(RunOf(id), id);
    std::replace(points.begin(), points.end(), id, 0);
    for (Program& program : programs) program.point = program.point == id ? 0 : program.point;
  }
};

/// A byte of the header of a cell, of either kind, that is not for the operations to change.
unsigned char& IdOf(const tag_C_ITEM& item) {
  auto* header =
      item.CI->GetType() == CELL_MOVIE
          ? reinterpret_cast<unsigned char*>(&static_cast<CMovieCell*>(item.CI)->GetHeader())
          : reinterpret_cast<unsigned char*>(&static_cast<CStillCell*>(item.CI)->GetHeader());
  return header[2];
}

Model ModelOf(CVMGInfo& info) {
  CPGCInfo& chain = info.GetOriginalPGC();
  const auto id = [&](const tag_CELL_POINT& point) {
    const bool names_none = point.cell == 0 || point.cell > chain.GetCellCount();
    return names_none ? 0 : IdOf(*chain.GetCellNode(point.cell - 1));
  };
  const tag_VMGI_MAT_HEADER& header = info.GetMAT().GetHeader();
  Model model{{}, {id(header.cell_point_70), id(header.cell_point_85)}, {}};
  CPlayListSRPTable& play_lists = info.GetMAT().GetPlayListTable();
  for (int i = 0; i < play_lists.GetCount(); ++i) {
    model.points.push_back(id(play_lists[i]->cell_point));
  }
  CPGCInfo& user_chain = info.GetUserPGCTable()[0]->UD_PGCI;
  for (int i = 0; i < user_chain.GetPGCount(); ++i) {
    model.user_numbers.push_back(user_chain.GetPGNode(i)->cell_point.cell);
  }
  int cell = 0;
  const auto add = [&](int count, int point) {
    model.programs.push_back({{}, point});
    for (; count > 0; --count) {
      model.programs.back().cells.push_back(IdOf(*chain.GetCellNode(cell++)));
    }
  };
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    add(chain.GetPGNode(i)->C_Ns, id(chain.GetPGNode(i)->cell_point));
  }
  add(chain.GetCellCount() - cell, 0);
  return model;
}

class RandomFile {
 public:
  explicit RandomFile(unsigned seed) : random_(seed) {
    CPGCInfo& chain = info_.GetOriginalPGC();
    const int cells = Below(30);
    for (int id = 1; id <= cells; ++id) {
      IdOf(*chain.AddCellNode(Below(2) == 0 ? CELL_MOVIE : CELL_STILL)) =
          static_cast<unsigned char>(id);
    }
    const auto fill = [&](tag_CELL_POINT& point) {
      const int odd[] = {0, kNoCell, cells + 1, cells + 2 + Below(9), 0xFFFE};
      point.cell = static_cast<std::uint16_t>(cells == 0 || Below(4) == 0 ? odd[Below(5)]
                                                                          : 1 + Below(cells));
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
    std::vector<Program>& programs = model_.programs;
    const int operation = 1 + Below(6);
    const int count = editor.ProgramCount();
    const int cells = editor.CellCount();
    const int i = Below(std::max(count, 1));
    const int cell = Below(std::max(cells, 1));
    const auto program = programs.begin() + i;
    if (operation == 1 && cells > 0) {
      model_.Drop(IdAt(cell));
      editor.DeleteCell(cell);
    } else if (operation == 2 && cells > 0) {
      MoveCell(editor, cell, Below(cells));
    } else if (operation == 3 && count > 0) {
      for (const int id : std::vector(program->cells)) model_.Drop(id);
      programs.erase(program);
      editor.DeleteProgram(i);
    } else if (operation == 4 && count > 0) {
      const int to = Below(count);
      const Program moved = *program;
      programs.erase(program);
      programs.insert(programs.begin() + to, moved);
      editor.MoveProgram(i, to);
    } else if (operation == 5 && count > 0 && program->cells.size() > 1) {
      SplitProgram(editor, i);
    } else if (operation == 6 && i + 1 < count) {
      const std::vector<int> next = program[1].cells;
      program->cells.insert(program->cells.end(), next.begin(), next.end());
      programs.erase(program + 1);
      editor.JoinPrograms(i);
    }
    EXPECT_EQ(ModelOf(info_), model_) << "after operation " << operation;
  }

 private:
  int Below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
  int IdAt(int cell) { return IdOf(*info_.GetOriginalPGC().GetCellNode(cell)); }

  void MoveCell(ChainEditor& editor, int cell, int to) {
    const int id = IdAt(cell);
    const int there = IdAt(to);
    if (cell != to) {
      std::erase(model_.RunOf(id), id);
      std::vector<int>& run = model_.RunOf(there);
      run.insert(std::find(run.begin(), run.end(), there) + (to > cell ? 1 : 0), id);
    }
    editor.MoveCell(cell, to);
  }

  void SplitProgram(ChainEditor& editor, int i) {
    const auto program = model_.programs.begin() + i;
    const int at = 1 + Below(static_cast<int>(program->cells.size()) - 1);
    Program second{{program->cells.begin() + at, program->cells.end()}, program->point};
    program->cells.erase(program->cells.begin() + at, program->cells.end());
    const bool goes_along = HasCell(second, program->point);
    (goes_along ? program->point : second.point) = 0;
    model_.programs.insert(program + 1, second);
    ASSERT_TRUE(editor.SplitProgram(i, editor.FirstCell(i) + at));
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
  info.GetOriginalPGC().AddCellNode(CELL_STILL);
  info.GetOriginalPGC().AddPGNode()->cell_point.cell = 1;
  tag_VMGI_MAT_HEADER& header = info.GetMAT().GetHeader();
  header.cell_point_70 = {4, 0x01020304, 5};
  header.cell_point_85 = {2, 0x01020304, 5};
  CPlayListSRPTable& play_lists = info.GetMAT().GetPlayListTable();
  play_lists.AddNode()->cell_point.cell = 3;
  play_lists.AddNode()->cell_point.cell = 5;
  tag_PGI* user = info.GetUserPGCTable().AddNode()->UD_PGCI.AddPGNode();
  user->cell_point = header.cell_point_85;
  const std::vector<VESKA::workshop::LostReference> expected = {{"header, cell point at 70", 4},
                                                                {"header, cell point at 85", 2}};
  EXPECT_EQ(Renumber(info, info.GetOriginalPGC(), {2, 0}), expected);
  EXPECT_EQ(play_lists[0]->cell_point.cell, 1);
  EXPECT_EQ(play_lists[1]->cell_point.cell, 5);
  EXPECT_EQ(info.GetOriginalPGC().GetPGNode(0)->cell_point.cell, 2);
  // A position becomes bytes only where the file object had converted it.
  EXPECT_EQ(header.cell_point_70, (tag_CELL_POINT{kNoCell, 0x01020304, 5}));
  EXPECT_EQ(MemoryOf(header.cell_point_85).Part(2, 6), Hex("01020304 0005"));
  EXPECT_EQ(user->cell_point, (tag_CELL_POINT{2, 0x01020304, 5}));  // counts its own chain's
}

TEST(Renumber, TheLastCellThatAChainCanHoldHasNoNumber) {
  CVMGInfo info;
  for (int i = 0; i < 0xFFFF; ++i) info.GetOriginalPGC().AddCellNode(CELL_MOVIE);
  info.GetMAT().GetHeader().cell_point_70.cell = 1;
  std::vector<std::string> notes;
  ChainEditor(info, notes).MoveCell(0, 0xFFFE);
  EXPECT_EQ(info.GetMAT().GetHeader().cell_point_70.cell, kNoCell);
  EXPECT_EQ(notes, std::vector<std::string>{
                       "header, cell point at 70 named cell 1, which has no number any "
                       "more: it names none now"});
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
