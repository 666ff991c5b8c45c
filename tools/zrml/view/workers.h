// Threads that answer questions, each with sources of its own. A newer question of a page takes the place of
// an older one of the same lane; long ones leave room for short ones, and for those of other tabs.
#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "convert/threads.h"
#include "source/source.h"
#include "tools/zrml/view/answers.h"
#include "tools/zrml/view/open_runs.h"

namespace zrml::view {

/// Who asks: a tab of the browser, and within it the lane ("spectrum") that a newer question replaces.
struct Asker {
  std::string tab;
  std::string lane;

  bool operator==(const Asker&) const = default;
};

struct Reply {
  enum class Kind { kAnswer, kSuperseded, kWrong };

  Kind kind = Kind::kAnswer;
  std::string frame = {};  ///< of an answer; an error of the source is the fact "error" of one
};

/// A question on its way to its answer.
struct Job {
  std::size_t run = 0;
  Question question = {};
  Asker asker = {};
  std::function<void(Reply)> reply = {};  ///< called once, on the thread of a worker or of what cancels it

  std::atomic<bool> isCancelled = false;
  std::atomic<std::uint64_t> done = 0;
  std::atomic<std::uint64_t> all = 0;
};

class Workers {
 public:
  using Answerer = std::function<Answer(source::Source&, const Question&, const Work&)>;

  /// `runs` are paths of sources, opened by each worker when it needs them, and again when they change. At
  /// least two workers. Throws an Error when the system gives no thread.
  Workers(std::vector<std::string> runs, int count, Answerer answer = AnswerTo);
  /// Cancels all and waits for it.
  ~Workers();
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  void Ask(std::shared_ptr<Job> job);
  /// Nobody waits for its answer any more.
  void Cancel(const std::shared_ptr<Job>& job);
  /// How much of its work each lane of a tab has done, from 0 to 1: those that wait or run.
  std::map<std::string, double> SharesOf(const std::string& tab);

  std::size_t RunCount() const { return runs_.size(); }

 private:
  using Jobs = std::deque<std::shared_ptr<Job>>;

  struct Worker {
    std::set<std::size_t> opened = {};  // runs
    bool isIdle = true;
  };

  void Serve(Worker& self);
  std::shared_ptr<Job> TakeNext(Worker& self);
  Jobs::iterator FindNext(const Worker& self);
  bool MayRun(const Job& job) const;
  bool IsFor(const Worker& self, const Job& job) const;
  Reply ReplyTo(Job& job, OpenRuns& open) const;
  std::string FrameFor(Job& job, OpenRuns& open) const;
  void End(const std::shared_ptr<Job>& job, const OpenRuns& open, Worker& self);
  static void Supersede(const Jobs& jobs);

  std::vector<std::string> runs_;
  Answerer answer_;
  convert::Mutex mutex_;
  convert::Condition changed_;
  Jobs waiting_;
  Jobs running_;
  bool isStopped_ = false;
  int mostLong_;
  std::deque<Worker> workers_;
  std::vector<std::unique_ptr<convert::Thread>> threads_;  // last: they use the rest
};

}  // namespace zrml::view
