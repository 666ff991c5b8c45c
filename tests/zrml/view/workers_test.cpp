#include <gtest/gtest.h>

#include "tests/zrml/small_acquisition.h"
#include "tests/zrml/view/opened_source.h"
#include "tools/zrml/view/requests.h"

namespace zrml::view {
namespace {

// Replies as they come in.
class Inbox {
 public:
  std::function<void(Reply)> Slot(const std::string& name) {
    return [this, name](Reply reply) {
      const convert::Lock lock(mutex_);
      replies_[name] = std::move(reply);
      changed_.NotifyAll();
    };
  }
  Reply Wait(const std::string& name) {
    convert::Lock lock(mutex_);
    changed_.Wait(lock, [&] { return replies_.contains(name); });
    return replies_[name];
  }

 private:
  convert::Mutex mutex_;
  convert::Condition changed_;
  std::map<std::string, Reply> replies_;
};

Json FactsOf(const Reply& reply) {
  const std::string json = reply.frame.substr(8);
  return Json::parse(json.substr(0, json.find_last_of('}') + 1));
}

class WorkersTest : public testing::Test {
 protected:
  std::shared_ptr<Job> Ask(const std::string& name, const std::string& question, const Asker& asker,
                           std::size_t run = 0) {
    const auto job = std::make_shared<Job>();
    job->run = run;
    job->question = *Question::Parse(question);
    job->asker = asker;
    job->reply = inbox_.Slot(name);
    workers_.Ask(job);
    return job;
  }

  const OpenedSource source_{test::SmallAcquisition()};
  Inbox inbox_;
  Workers workers_{{source_.Folder().Path().string(), "none.raw"}, 2};
};

TEST_F(WorkersTest, AnswerEachLane) {
  Ask("run", "run", {"tab", "a"});
  Ask("peaks", "peaks?function=0&sample=0", {"tab", "b"});
  EXPECT_EQ(FactsOf(inbox_.Wait("run"))["name"], "run.raw");
  EXPECT_EQ(FactsOf(inbox_.Wait("peaks"))["peaks"].size(), 1U);
}

TEST_F(WorkersTest, ErrorsOfASourceAreFacts) {
  Ask("run", "run", {"tab", "a"}, 1);
  EXPECT_EQ(FactsOf(inbox_.Wait("run"))["error"], "there is no file or folder none.raw");
}

TEST_F(WorkersTest, WhatIsNotThereIsWrong) {
  Ask("run", "run", {"tab", "a"}, 2);
  Ask("sample", "sample?sample=7", {"tab", "b"});
  EXPECT_EQ(inbox_.Wait("run").kind, Reply::Kind::kWrong);
  EXPECT_EQ(inbox_.Wait("sample").kind, Reply::Kind::kWrong);
}

TEST_F(WorkersTest, ASourceThatIsBackIsOpenedAgain) {
  const std::filesystem::path path = source_.Folder().Path();
  const std::filesystem::path away = path.parent_path() / "away.raw";
  std::filesystem::rename(path, away);
  Ask("gone", "run", {"tab", "a"});
  EXPECT_TRUE(FactsOf(inbox_.Wait("gone")).contains("error"));
  std::filesystem::rename(away, path);
  Ask("back", "run", {"tab", "a"});
  EXPECT_EQ(FactsOf(inbox_.Wait("back"))["name"], "run.raw");
}

TEST_F(WorkersTest, ASourceThatHasChangedIsOpenedAgain) {
  Ask("before", "chromatogram?function=0&kind=tic&sample=0", {"tab", "a"});
  inbox_.Wait("before");
  RawDirectoryBuilder other;
  other.functions = {test::SmallFunction(18, 8, {test::SmallScan(1, CentroidState::kCentroid, {{50, 3}})})};
  other.WriteTo(source_.Folder().Path());
  Ask("after", "peaks?function=0&sample=0", {"tab", "b"});
  EXPECT_EQ(FactsOf(inbox_.Wait("after"))["peaks"].dump(), R"([{"scan":0,"minutes":1.0,"intensity":3.0}])");
}

TEST(OpenRuns, AreAFewOfMany) {
  const OpenedSource source(test::SmallAcquisition());
  const std::vector<std::string> paths(OpenRuns::kMost + 2, source.Folder().Path().string());
  OpenRuns open(paths);
  for (std::size_t run = 0; run < paths.size(); ++run) open.Open(run);
  open.Open(2);  // which is the one that was asked for last now
  open.Open(0);
  const std::set<std::size_t> all = open.All();
  EXPECT_EQ(all.size(), OpenRuns::kMost);
  EXPECT_TRUE(all.contains(0));
  EXPECT_FALSE(all.contains(1));
  EXPECT_TRUE(all.contains(2));
  EXPECT_FALSE(all.contains(3));
}

// What workers wait for, noted in the order in which they come. They may look at it for a moment longer than
// a test lasts.
class Gate {
 public:
  void Pass(const std::string& name) {
    convert::Lock lock(mutex_);
    names_.push_back(name);
    changed_.NotifyAll();
    changed_.Wait(lock, [this] { return isOpen_; });
  }
  std::set<std::string> Await(std::size_t count) {
    convert::Lock lock(mutex_);
    changed_.Wait(lock, [&] { return names_.size() >= count; });
    return {names_.begin(), names_.end()};
  }
  void Open() {
    const convert::Lock lock(mutex_);
    isOpen_ = true;
    changed_.NotifyAll();
  }

 private:
  convert::Mutex mutex_;
  convert::Condition changed_;
  std::vector<std::string> names_;
  bool isOpen_ = false;
};

// Both workers wait in a reply until the gate opens, so what is asked meanwhile stays in the queue.
class QueueTest : public WorkersTest {
 protected:
  QueueTest() {
    for (const char* lane : {"first", "second"}) {
      const auto job = std::make_shared<Job>();
      job->question = *Question::Parse("run");
      job->asker = {"busy", lane};
      job->reply = [gate = gate_](Reply) { gate->Pass("reply"); };
      workers_.Ask(job);
    }
    gate_->Await(2);
  }
  ~QueueTest() override { gate_->Open(); }

  std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
};

TEST_F(QueueTest, ANewerQuestionOfALaneTakesThePlaceOfTheOlder) {
  Ask("older", "run", {"tab", "lane"});
  Ask("other lane", "run", {"tab", "other"});
  Ask("other tab", "run", {"another", "lane"});
  Ask("newer", "sample?sample=0", {"tab", "lane"});
  EXPECT_EQ(inbox_.Wait("older").kind, Reply::Kind::kSuperseded);
  gate_->Open();
  for (const char* name : {"other lane", "other tab", "newer"})
    EXPECT_EQ(inbox_.Wait(name).kind, Reply::Kind::kAnswer) << name;
}

TEST_F(QueueTest, WhatWaitsHasDoneNothing) {
  Ask("a", "run", {"tab", "a"});
  Ask("b", "run", {"tab", "b"});
  EXPECT_EQ(workers_.SharesOf("tab"), (std::map<std::string, double>{{"a", 0}, {"b", 0}}));
  EXPECT_EQ(workers_.SharesOf("another").size(), 0U);
}

TEST_F(QueueTest, CancelledQuestionsAreForgotten) {
  const auto job = Ask("a", "run", {"tab", "a"});
  workers_.Cancel(job);
  EXPECT_EQ(workers_.SharesOf("tab").size(), 0U);
}

// Answers wait at the gate.
class LongWorkTest : public testing::Test {
 protected:
  ~LongWorkTest() override { gate_.Open(); }

  void Ask(const std::string& question, const std::string& tab) { Ask(question, {tab, question}); }
  void Ask(const std::string& question, const Asker& asker) {
    const auto job = std::make_shared<Job>();
    job->question = *Question::Parse(question);
    job->asker = asker;
    job->reply = [](Reply) {};
    workers_.Ask(job);
  }

  const OpenedSource source_{test::SmallAcquisition()};
  Gate gate_;
  Workers workers_{
      {source_.Folder().Path().string()}, 4, [this](source::Source&, const Question& question, const Work&) {
        gate_.Pass(question.Text());
        return Answer();
      }};
};

// The first that may begin does: what was asked before it and has not begun, was not allowed to.
TEST_F(LongWorkTest, OfATabLeavesAWorkerForOtherTabs) {
  for (const char* question : {"map?a=1", "map?a=2", "map?a=3"}) Ask(question, "a");
  Ask("map?b=1", "b");
  EXPECT_EQ(gate_.Await(3), (std::set<std::string>{"map?a=1", "map?a=2", "map?b=1"}));
}

TEST_F(LongWorkTest, OfAllTabsLeavesAWorkerForShortQuestions) {
  for (const char* question : {"map?a=1", "map?a=2"}) Ask(question, "a");
  for (const char* question : {"map?b=1", "map?b=2"}) Ask(question, "b");
  Ask("spectrum?scan=1", "a");
  EXPECT_EQ(gate_.Await(4), (std::set<std::string>{"map?a=1", "map?a=2", "map?b=1", "spectrum?scan=1"}));
}

TEST_F(LongWorkTest, GoesOnWhenOtherHasEnded) {
  for (const char* question : {"map?a=1", "map?a=2", "map?a=3"}) Ask(question, "a");
  gate_.Await(2);
  gate_.Open();
  EXPECT_TRUE(gate_.Await(3).contains("map?a=3"));
}

TEST_F(LongWorkTest, IsShownWhateverTheBytesOfItsLane) {
  Requests requests(workers_, 8080, "abcd");
  Ask("map?a=1", Asker{"a", "\xFF"});
  Job job;
  const Request request = {.isGet = true,
                           .host = "127.0.0.1:8080",
                           .target = "/progress",
                           .token = "abcd",
                           .asker = {"a", "progress"}};
  EXPECT_EQ(requests.Answer(request, job)->body, "{\"\xEF\xBF\xBD\":0.0}");
}

class RequestsTest : public testing::Test {
 protected:
  Request Right(const std::string& target) const {
    return {.isGet = true, .host = "127.0.0.1:8080", .target = target, .token = "abcd", .asker = {"t", "l"}};
  }
  unsigned StatusOf(const Request& request) {
    Job job;
    const std::optional<Response> response = requests_.Answer(request, job);
    return response ? response->status : 0;  // 0: a question
  }

  Workers workers_{{"none.raw", "other.raw"}, 2};
  Requests requests_{workers_, 8080, "abcd"};
};

TEST_F(RequestsTest, PageAndScriptsNeedNoToken) {
  for (const char* target : {"/", "/page.css", "/page.js", "/uplot.js"}) {
    Request request = Right(target);
    request.token.clear();
    EXPECT_EQ(StatusOf(request), 200U) << target;
  }
}

TEST_F(RequestsTest, DataNeedTheToken) {
  for (const char* target : {"/runs", "/progress", "/data/0/run", "/anything"}) {
    for (const char* token : {"", "abc", "abce", "ABCD", "abcda"}) {
      Request request = Right(target);
      request.token = token;
      EXPECT_EQ(StatusOf(request), 403U) << target << ' ' << token;
    }
  }
  EXPECT_EQ(StatusOf(Right("/data/0/run")), 0U);
}

TEST_F(RequestsTest, HostIsTheOwnOneAsAWhole) {
  for (const char* host :
       {"", "127.0.0.1", "127.0.0.1:80", "127.0.0.1:80800", "127.0.0.1.evil.com:8080", "evil.com",
        "evil.com:8080", "localhost.evil.com:8080", "0.0.0.0:8080", "[::1]:8080", "127.0.0.1:8080 "}) {
    for (const char* target : {"/", "/data/0/run"}) {
      Request request = Right(target);
      request.host = host;
      EXPECT_EQ(StatusOf(request), 403U) << host;
    }
  }
  Request named = Right("/");
  named.host = "localhost:8080";
  EXPECT_EQ(StatusOf(named), 200U);
  Request twice = Right("/");
  twice.hosts = 2;
  EXPECT_EQ(StatusOf(twice), 403U);
}

TEST_F(RequestsTest, OnlyGetIsAnswered) {
  Request request = Right("/");
  request.isGet = false;
  EXPECT_EQ(StatusOf(request), 405U);
}

TEST_F(RequestsTest, OtherTargetsAreNotThere) {
  for (const char* target :
       {"/data/", "/data/0", "/data/0/", "/data/x/run", "/data/-1/run", "/data/0/../run",
        "/data/0/run?path=/etc/passwd", "/page.js/", "/../page.js", "//", "/data/99999999999999999999/run"}) {
    EXPECT_EQ(StatusOf(Right(target)), 404U) << target;
  }
}

TEST_F(RequestsTest, QuestionsHaveTheirRunAndAsker) {
  Job job;
  EXPECT_FALSE(requests_.Answer(Right("/data/1/sample?sample=4"), job));
  EXPECT_EQ(job.run, 1U);
  EXPECT_EQ(job.question.Text(), "sample?sample=4");
  EXPECT_EQ(job.asker, (Asker{"t", "l"}));
}

TEST_F(RequestsTest, RunsAreCounted) {
  Job job;
  EXPECT_EQ(requests_.Answer(Right("/runs"), job)->body, "{\"runs\":2}");
  EXPECT_EQ(requests_.Answer(Right("/progress"), job)->body, "{}");
}

TEST(Token, HasDigitsThatDiffer) {
  const std::string token = MakeToken();
  EXPECT_EQ(token.size(), 32U);
  EXPECT_EQ(token.find_first_not_of("0123456789abcdef"), token.npos);
  EXPECT_NE(token, MakeToken());
}

}  // namespace
}  // namespace zrml::view
