// Reports made at random from the grammar, then damaged at random.
#pragma once

#include <cstdint>
#include <random>
#include <string>

namespace zrml {

class RandomReport {
 public:
  explicit RandomReport(unsigned seed) : random_(seed) {}

  /// The bytes of the next report.
  std::string Next();

  /// The same, with one sample whose functions have either MS level, with and without ends, and whose spectra
  /// have few different times.
  std::string NextWithPrecursors();

  /// 0 <= value < `limit`. The same numbers on every platform.
  int Below(int limit) { return static_cast<int>(random_() % static_cast<std::uint32_t>(limit)); }

 private:
  bool Chance(int percent) { return Below(100) < percent; }
  std::string Pick(const char* const* choices, int count);
  template <std::size_t N>
  std::string OneOf(const char* const (&choices)[N]) {
    return Pick(choices, static_cast<int>(N));
  }

  void Put(const std::string& line);
  void KeyLine();
  void DataLine();
  void List(const char* marker);
  void Inner(const char* marker, const char* list);
  void Function();
  void Sample();
  void Nest();
  void OddLine();
  std::string LongLine();
  void Damage();

  std::mt19937 random_;
  std::string text_;
};

}  // namespace zrml
