#include "spectrum/peak_sequence.h"

#include <cmath>
#include <limits>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "tests/spectrum/random_numbers.h"

namespace zrml {
namespace {

using Index = PeakSequence::Index;

constexpr Index kNone = PeakSequence::kNone;

std::vector<Index> Forwards(const PeakSequence& peaks) {
  std::vector<Index> found;
  for (Index i = peaks.First(); i != kNone; i = peaks.Above(i)) found.push_back(i);
  return found;
}

std::vector<Index> Backwards(const PeakSequence& peaks) {
  std::vector<Index> found;
  for (Index i = peaks.Last(); i != kNone; i = peaks.Below(i)) found.push_back(i);
  return found;
}

TEST(PeakSequence, InsertsAndRemovesAnywhere) {
  PeakSequence peaks;
  EXPECT_EQ(peaks.First(), kNone);
  EXPECT_EQ(peaks.Find(peaks.First(), 1), kNone);
  const Index b = peaks.InsertBefore(kNone, 20, 2);
  const Index d = peaks.InsertBefore(kNone, 40, 4);
  const Index a = peaks.InsertBefore(b, 10, 1);
  const Index c = peaks.InsertBefore(d, 30, 3);
  EXPECT_EQ(Forwards(peaks), (std::vector{a, b, c, d}));
  EXPECT_EQ(Backwards(peaks), (std::vector{d, c, b, a}));
  EXPECT_EQ(peaks.Mass(c), 30);
  EXPECT_EQ(peaks.Intensity(c), 3);
  for (const Index i : {a, d, b}) {
    peaks.Remove(i);
    EXPECT_EQ(peaks.Mass(i), 0);
  }
  EXPECT_EQ(Forwards(peaks), (std::vector{c}));
  EXPECT_EQ(Backwards(peaks), (std::vector{c}));
  peaks.Remove(c);
  EXPECT_EQ(peaks.Count(), 0U);
  const Index e = peaks.InsertBefore(kNone, 50, 5);
  EXPECT_LT(e, 4U);  // an index that was in use
  EXPECT_EQ(Forwards(peaks), (std::vector{e}));
}

TEST(PeakSequence, FindsTheNextThatIsNotBelowAMassOrIsUnsettled) {
  PeakSequence peaks;
  const double masses[] = {10, 40, 20, std::nan(""), 30};
  std::vector<Index> all;
  for (const double mass : masses) all.push_back(peaks.InsertBefore(kNone, mass, 1));
  EXPECT_EQ(peaks.Find(all[0], 10), all[0]);
  EXPECT_EQ(peaks.Find(all[0], 11), all[1]);
  EXPECT_EQ(peaks.Find(all[2], 20), all[2]);
  EXPECT_EQ(peaks.Find(all[2], 21), all[4]);
  EXPECT_EQ(peaks.Find(all[2], 31), kNone);
  EXPECT_EQ(peaks.Find(all[0], std::nan("")), kNone);
  EXPECT_EQ(peaks.Find(kNone, 1), kNone);
  EXPECT_FALSE(peaks.HasUnsettled());
  peaks.SetUnsettled(all[3], true);
  EXPECT_TRUE(peaks.HasUnsettled());
  EXPECT_EQ(peaks.Find(all[2], 31), all[3]);
  EXPECT_EQ(peaks.Find(all[0], std::nan("")), all[3]);
  peaks.Remove(all[3]);
  EXPECT_FALSE(peaks.HasUnsettled());
  EXPECT_EQ(peaks.Find(all[2], 31), kNone);
}

// A sequence and its expected order. Masses mostly ascend.
class Model {
 public:
  explicit Model(std::uint32_t seed) : random_(seed) {}

  std::size_t Count() const { return order_.size(); }

  void Insert(std::size_t at) {
    const Index place = at < Count() ? order_[at] : kNone;
    order_.insert(order_.begin() + static_cast<std::ptrdiff_t>(at),
                  peaks_.InsertBefore(place, MassAt(at), 1));
  }

  void Remove(std::size_t at) {
    const Index i = order_[at];
    unsettled_.erase(i);
    peaks_.Remove(i);
    order_.erase(order_.begin() + static_cast<std::ptrdiff_t>(at));
  }

  void Change(std::size_t at) {
    const Index i = order_[at];
    peaks_.Mass(i) = MassAt(at);
    peaks_.Update(i);
    const bool isUnsettled = random_.Below(8) == 0;
    peaks_.SetUnsettled(i, isUnsettled);
    if (isUnsettled) {
      unsettled_.insert(i);
    } else {
      unsettled_.erase(i);
    }
  }

  void ExpectFinds(std::size_t from) {
    const double mass = random_.Below(9) == 0 ? std::nan("") : MassAt(Somewhere(Count()));
    std::size_t at = from;
    while (at < Count() && !(peaks_.Mass(order_[at]) >= mass) && !unsettled_.contains(order_[at])) ++at;
    ASSERT_EQ(peaks_.Find(order_[from], mass), at < Count() ? order_[at] : kNone) << from << ' ' << mass;
  }

  void ExpectOrder() const {
    ASSERT_EQ(Forwards(peaks_), order_);
    ASSERT_EQ(Backwards(peaks_), std::vector<Index>(order_.rbegin(), order_.rend()));
    ASSERT_EQ(peaks_.Count(), Count());
    ASSERT_EQ(peaks_.HasUnsettled(), !unsettled_.empty());
  }

  std::size_t Somewhere(std::size_t count) {
    return static_cast<std::size_t>(random_.Below(static_cast<int>(count)));
  }

 private:
  double MassAt(std::size_t at) {
    const double odd[] = {0, -1, 1e6, std::nan(""), std::numeric_limits<double>::infinity()};
    if (random_.Below(500) == 0) return odd[random_.Below(5)];
    return 100 + static_cast<double>(at) + random_.Below(3);
  }

  RandomNumbers random_;
  PeakSequence peaks_;
  std::vector<Index> order_;
  std::set<Index> unsettled_;
};

// Up to 9,000 peaks in blocks of at most 64, so blocks of blocks are split too; then down to none.
TEST(PeakSequence, AgreesWithAPlainVector) {
  Model model(1);
  for (int round = 0; round < 9000; ++round) {
    model.Insert(round % 3 == 0 ? model.Somewhere(model.Count() + 1) : model.Count() / 2);
    model.Change(model.Somewhere(model.Count()));
    model.ExpectFinds(model.Somewhere(model.Count()));
    model.ExpectFinds(0);
  }
  model.ExpectOrder();
  for (int round = 0; round < 4500; ++round) {
    model.Remove(model.Somewhere(model.Count()));
    model.Remove(0);
    if (model.Count() == 0) break;
    model.Change(model.Somewhere(model.Count()));
    model.ExpectFinds(model.Somewhere(model.Count()));
    model.ExpectFinds(0);
  }
  model.ExpectOrder();
  EXPECT_EQ(model.Count(), 0U);
  model.Insert(0);
  model.ExpectOrder();
}

}  // namespace
}  // namespace zrml
