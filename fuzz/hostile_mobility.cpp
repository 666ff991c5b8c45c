// Replaces the instrument maker's mobility library: answers with the bytes of the compressed data file, so no
// answer is reliable.
#include <algorithm>

#include "common/platform/platform.h"
#include "common/text.h"
#include "fuzz/input.h"
#include "fuzz/simulated_files.h"
#include "masslynx/scandata/compressed_data_cluster.h"

namespace zrml::masslynx {
namespace {

class HostileCluster : public MobilityCluster {
 public:
  explicit HostileCluster(int function) { Load(function); }

  void Initialise(const std::string&, int function) override { Load(function); }
  bool IsInitialised() override { return Byte() != 0; }
  bool GetNumberOfBlocks(int& blocks) override { return Answer(blocks); }
  bool GetScansInBlock(int& bins) override { return Answer(bins); }
  bool GetMassAxisLength(int& length) override {
    const bool hasAnswered = Answer(length);
    if (length >= 0 && length <= kLargest) length_ = static_cast<std::size_t>(length);
    return hasAnswered;
  }
  bool GetMassAxis(float* axis) override {
    std::generate_n(axis, length_, [&] { return static_cast<float>(Byte()) - 8; });
    return Byte() != 0;
  }
  bool LoadDataBlock(int) override { return Byte() != 0; }
  bool GetScan(int, int, int* indices, float* intensities, int& count) override {
    std::generate_n(indices, length_, [&] { return static_cast<int>(static_cast<signed char>(Byte())); });
    std::generate_n(intensities, length_, [&] { return static_cast<float>(Byte()) - 8; });
    return Answer(count);
  }
  bool GetRT(int, int, float& seconds) override {
    seconds = static_cast<float>(Byte());
    return Byte() != 0;
  }

 private:
  static constexpr int kLargest = 64;

  void Load(int function) {
    const platform::File file =
        platform::File::Open(std::wstring(fuzz::kFolder) + L"/_FUNC" + ZeroPadded(function, 3) + L".CDT");
    bytes_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(file.Size(), 4096)));
    file.ReadAt(0, bytes_);
  }

  // Wraps around, so a short file does not end in nothing but zeros.
  unsigned Byte() {
    if (bytes_.empty()) return 1;
    at_ = (at_ + 1) % bytes_.size();
    return std::to_integer<unsigned>(bytes_[at_]);
  }

  // Mostly a small number; sometimes an impossible one.
  bool Answer(int& value) {
    constexpr int kImpossible[] = {-1, -0x7FFFFFFF - 1, 0x7FFFFFFF, (1 << 24) + 1};
    const unsigned byte = Byte();
    value = byte >= 0xFC ? kImpossible[byte - 0xFC] : static_cast<int>(byte % (kLargest + 1));
    return Byte() != 0;
  }

  std::vector<std::byte> bytes_;
  std::size_t at_ = 0;
  std::size_t length_ = 0;
};

}  // namespace

std::unique_ptr<MobilityCluster> OpenCompressedDataCluster(const std::string&, int function) {
  return std::make_unique<HostileCluster>(function);
}

}  // namespace zrml::masslynx
