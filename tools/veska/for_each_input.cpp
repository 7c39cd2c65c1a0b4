#include "for_each_input.h"

#include <CLI/CLI.hpp>
#include <deque>
#include <future>
#include <iostream>
#include <sstream>
#include <utility>

#include "progress.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

/// What became of an input: to be printed when its turn has come.
struct Outcome {
  ExitStatus status = ExitStatus::kDone;
  std::string out = {};
  Notes notes = {};
};

Outcome Handle(const Input& input, const InputWork& work) {
  Outcome outcome{.notes = input.notes};
  std::ostringstream out;
  outcome.status = Caught(input.name, outcome.notes, [&] { return work.action(input, out); });
  outcome.out = std::move(out).str();
  return outcome;
}

class Queue {
 public:
  Queue(const InputWork& work, Progress& progress) : work_(work), progress_(progress) {}

  void Add(Input input) {
    input.order = count_++;
    if (work_.jobs <= 1) return Print(Handle(input, work_));
    if (waiting_.size() >= work_.jobs) PrintFirst();
    waiting_.push_back(std::async(
        std::launch::async, [this, input = std::move(input)] { return Handle(input, work_); }));
  }
  void Add(Outcome outcome) {
    Finish();
    Print(outcome);
  }
  void Finish() {
    while (!waiting_.empty()) PrintFirst();
  }
  ExitStatus Worst() const { return worst_; }

 private:
  void PrintFirst() {
    std::future<Outcome> first = std::move(waiting_.front());
    waiting_.pop_front();
    Print(first.get());
  }
  void Print(const Outcome& outcome) {
    progress_.Erase();
    for (const Note& note : outcome.notes) Message(note.where, note.what);
    std::cout << outcome.out;
    FlushStandardOutput();
    worst_ = Worse(worst_, outcome.status);
  }

  const InputWork& work_;
  Progress& progress_;
  std::deque<std::future<Outcome>> waiting_;
  std::size_t count_ = 0;
  ExitStatus worst_ = ExitStatus::kDone;
};

/// The inputs that an argument stands for go into the queue; of one that cannot be read, the
/// reason.
void Take(const std::string& argument, const InputOptions& options, const InputWork& work,
          Queue& queue) {
  Outcome outcome;
  std::vector<Input> inputs;
  outcome.status = Caught(NameOfInput(argument), outcome.notes, [&] {
    inputs = ReadInputs(argument, options);
    return ExitStatus::kDone;
  });
  for (Input& input : inputs) queue.Add(std::move(input));
  if (outcome.notes.empty()) return;
  std::ostringstream out;
  if (work.print_bad) work.print_bad(argument, outcome.notes.back().what, out);
  outcome.out = std::move(out).str();
  queue.Add(std::move(outcome));
}

}  // namespace

ExitStatus ForEachInput(const std::vector<std::string>& arguments, const InputOptions& options,
                        const InputWork& work) {
  Progress progress(arguments.size(), "files");
  Queue queue(work, progress);
  std::size_t done = 0;
  for (const std::string& argument : arguments) {
    progress.Show(done++);
    Take(argument, options, work, queue);
  }
  queue.Finish();
  return queue.Worst();
}

void DeclareJobs(CLI::App& app, unsigned& jobs) {
  constexpr unsigned kMost = 256;
  app.add_option("--jobs", jobs, "Work on this many files at once")
      ->type_name("N")
      ->check(CLI::Range(1U, kMost).description(""));
}

}  // namespace veska_tool
