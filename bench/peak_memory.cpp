// Peak memory of reading one large scan; the floor is its points as two arrays of doubles plus its bytes.
// Prints one line for the table of scripts/bench.sh.
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <new>

#include "bench/acquisition.h"
#include "plugin/raw_server.h"

namespace {

std::size_t inUse = 0;
std::size_t peak = 0;

void* Counted(std::size_t size) {
  void* const block = std::malloc(size != 0 ? size : 1);
  if (block == nullptr) return nullptr;
  inUse += ::malloc_usable_size(block);
  if (inUse > peak) peak = inUse;
  return block;
}

}  // namespace

void* operator new(std::size_t size) {
  void* const block = Counted(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Counted(size); }
void operator delete(void* block) noexcept {
  inUse -= ::malloc_usable_size(block);
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

int main() {
  using namespace zrml;
  const bench::LayoutData layout = {9, 1'000'000, true};
  const TempDirectory& directory = bench::AcquisitionOf(layout);
  plugin::CMLDataServerImpl server;
  CZRMassSpectrum spectrum;
  if (!server.Open(directory.WidePath()) || server.GetScanCount(0, 0) != 1) return 1;
  const std::size_t before = inUse;
  peak = inUse;
  if (!server.GetSpectrum(0, 0, 0, spectrum) || spectrum.GetCount() != 1'000'000) return 1;
  std::printf("Peak memory of a read of 1M points, bytes\t%zu\t%zu\n", peak - before,
              2 * sizeof(double) * layout.points + bench::ScanBytes(layout));
}
