#include "tools/zrml/view/workers.h"

#include <algorithm>
#include <new>

namespace zrml::view {
namespace {

std::string ErrorFrame(const std::string& message) {
  Answer answer;
  answer.facts["error"] = message;
  return FrameOf(answer);
}

}  // namespace

// One worker is always left for short questions.
Workers::Workers(std::vector<std::string> runs, int count, Answerer answer)
    : runs_(std::move(runs)),
      answer_(std::move(answer)),
      mostLong_(count - 1),
      workers_(static_cast<std::size_t>(count)) {
  for (Worker& worker : workers_)
    threads_.push_back(std::make_unique<convert::Thread>([this, &worker] { Serve(worker); }));
}

Workers::~Workers() {
  Jobs dropped;
  {
    const convert::Lock lock(mutex_);
    isStopped_ = true;
    for (const std::shared_ptr<Job>& job : running_) job->isCancelled = true;
    dropped.swap(waiting_);
    changed_.NotifyAll();
  }
  Supersede(dropped);
}

void Workers::Supersede(const Jobs& jobs) {
  for (const std::shared_ptr<Job>& job : jobs) job->reply({Reply::Kind::kSuperseded});
}

void Workers::Ask(std::shared_ptr<Job> job) {
  Jobs dropped;
  {
    const convert::Lock lock(mutex_);
    const auto isOlder = [&](const std::shared_ptr<Job>& other) { return other->asker == job->asker; };
    for (const std::shared_ptr<Job>& other : running_) {
      if (isOlder(other)) other->isCancelled = true;
    }
    std::copy_if(waiting_.begin(), waiting_.end(), std::back_inserter(dropped), isOlder);
    std::erase_if(waiting_, isOlder);
    waiting_.push_back(std::move(job));
    changed_.NotifyAll();
  }
  Supersede(dropped);
}

void Workers::Cancel(const std::shared_ptr<Job>& job) {
  const convert::Lock lock(mutex_);
  job->isCancelled = true;
  std::erase(waiting_, job);
}

std::map<std::string, double> Workers::SharesOf(const std::string& tab) {
  std::map<std::string, double> shares;
  const convert::Lock lock(mutex_);
  for (const Jobs* const jobs : {&waiting_, &running_}) {
    for (const std::shared_ptr<Job>& job : *jobs) {
      const auto all = static_cast<double>(job->all);
      if (job->asker.tab == tab) shares[job->asker.lane] = all > 0 ? static_cast<double>(job->done) / all : 0;
    }
  }
  return shares;
}

void Workers::Serve(Worker& self) {
  OpenRuns open(runs_);
  while (const std::shared_ptr<Job> job = TakeNext(self)) {
    Reply reply = ReplyTo(*job, open);
    End(job, open, self);
    job->reply(std::move(reply));
  }
}

// Null when it is time to end.
std::shared_ptr<Job> Workers::TakeNext(Worker& self) {
  convert::Lock lock(mutex_);
  self.isIdle = true;
  changed_.NotifyAll();  // what was left to this one may be for others
  changed_.Wait(lock, [&] { return isStopped_ || FindNext(self) != waiting_.end(); });
  if (isStopped_) return nullptr;
  const auto next = FindNext(self);
  std::shared_ptr<Job> job = *next;
  waiting_.erase(next);
  running_.push_back(job);
  self.isIdle = false;
  changed_.NotifyAll();
  return job;
}

Workers::Jobs::iterator Workers::FindNext(const Worker& self) {
  return std::find_if(waiting_.begin(), waiting_.end(),
                      [&](const std::shared_ptr<Job>& job) { return MayRun(*job) && IsFor(self, *job); });
}

// Opening a large run takes time and memory: one that has it open goes first.
bool Workers::IsFor(const Worker& self, const Job& job) const {
  if (self.opened.contains(job.run)) return true;
  return std::none_of(workers_.begin(), workers_.end(),
                      [&](const Worker& other) { return other.isIdle && other.opened.contains(job.run); });
}

// Of the long ones a tab may have all but one; the last one is for other tabs.
bool Workers::MayRun(const Job& job) const {
  if (!IsLong(job.question)) return true;
  int all = 0;
  int own = 0;
  for (const std::shared_ptr<Job>& other : running_) {
    if (!IsLong(other->question)) continue;
    ++all;
    if (other->asker.tab == job.asker.tab) ++own;
  }
  return all < mostLong_ && own < std::max(mostLong_ - 1, 1);
}

void Workers::End(const std::shared_ptr<Job>& job, const OpenRuns& open, Worker& self) {
  const convert::Lock lock(mutex_);
  std::erase(running_, job);
  self.opened = open.All();
  changed_.NotifyAll();
}

Reply Workers::ReplyTo(Job& job, OpenRuns& open) const {
  try {
    return {Reply::Kind::kAnswer, FrameFor(job, open)};
  } catch (const source::Cancelled&) {
    return {Reply::Kind::kSuperseded};
  } catch (const WrongQuestion&) {
    return {Reply::Kind::kWrong};
  } catch (const source::Error& error) {
    open.Close(job.run);  // what is repaired or is back can be opened again
    return {Reply::Kind::kAnswer, ErrorFrame(error.Message())};
  } catch (const std::bad_alloc&) {
    return {Reply::Kind::kAnswer, ErrorFrame("not enough memory")};
  } catch (const std::exception& error) {
    return {Reply::Kind::kAnswer, ErrorFrame(error.what())};
  }
}

std::string Workers::FrameFor(Job& job, OpenRuns& open) const {
  if (job.run >= runs_.size()) throw WrongQuestion();
  source::Source& source = open.Open(job.run);
  const Work work = {[&job] { return job.isCancelled.load(); },
                     [&job](std::uint64_t done, std::uint64_t all) {
                       job.all = all;
                       job.done = done;
                     }};
  return FrameOf(answer_(source, job.question, work));
}

}  // namespace zrml::view
