// The string and the allocator of the contract with hosts, compared with the standard ones.
#include <algorithm>
#include <string>
#include <vector>

#include "common/host_heap.h"
#include "common/host_string.h"
#include "fuzz/check.h"
#include "fuzz/input.h"

namespace zrml::fuzz {
namespace {

using HostText = BasicHostString<char16_t>;
using Numbers = std::vector<std::uint32_t, HostAllocator<std::uint32_t>>;

constexpr std::size_t kVariables = 3;
constexpr int kLongest = 5000;  // blocks from 4,096 bytes on have another form

struct Strings {
  HostText host[kVariables];
  std::u16string model[kVariables];
};

void StepStrings(Input& input, Strings& strings) {
  const auto a = static_cast<std::size_t>(input.Below(kVariables));
  const auto b = static_cast<std::size_t>(input.Below(kVariables));
  switch (input.Below(6)) {
    case 0: {
      const std::u16string text(static_cast<std::size_t>(input.Below(kLongest)), input.Value<char16_t>());
      strings.host[a].Assign(text);
      strings.model[a] = text;
      break;
    }
    case 1: {
      const std::u16string text(static_cast<std::size_t>(input.Below(10)), input.Value<char16_t>());
      strings.host[a] = HostText(std::u16string_view(text));
      strings.model[a] = text;
      break;
    }
    case 2:
      strings.host[a] = strings.host[b];
      strings.model[a] = strings.model[b];
      break;
    case 3:
      if (a == b) break;
      strings.host[a] = std::move(strings.host[b]);
      Check(strings.host[b].empty(), "a string that was moved from is empty");
      strings.model[a] = std::move(strings.model[b]);
      strings.model[b].clear();
      break;
    case 4:
      swap(strings.host[a], strings.host[b]);
      std::swap(strings.model[a], strings.model[b]);
      break;
    default: {
      HostText copy(strings.host[a]);
      const HostText moved(std::move(copy));
      Check(moved == strings.host[a], "a copy is equal");
    }
  }
  for (std::size_t i = 0; i < kVariables; ++i) {
    Check(strings.host[i] == std::u16string_view(strings.model[i]), "strings are equal");
    Check(strings.host[i].data()[strings.host[i].size()] == 0, "a string is terminated");
  }
}

void StepNumbers(Input& input, Numbers& host, std::vector<std::uint32_t>& model) {
  switch (input.Below(4)) {
    case 0: {
      const auto value = input.Value<std::uint32_t>();
      host.push_back(value);
      model.push_back(value);
      break;
    }
    case 1: {
      const auto size = static_cast<std::size_t>(input.Below(kLongest));
      host.resize(size, 7);
      model.resize(size, 7);
      break;
    }
    case 2:
      host.shrink_to_fit();
      break;
    default: {
      Numbers copy(host);
      host = std::move(copy);
    }
  }
  Check(std::equal(host.begin(), host.end(), model.begin(), model.end()), "vectors are equal");
  constexpr std::size_t kLargeBlock = 4096;
  const bool isLarge = host.capacity() * sizeof(std::uint32_t) >= kLargeBlock;
  Check(!isLarge || reinterpret_cast<std::uintptr_t>(host.data()) % 32 == 0, "large blocks are aligned");
}

}  // namespace
}  // namespace zrml::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zrml::fuzz;
  Input input(data, size);
  Strings strings;
  Numbers host;
  std::vector<std::uint32_t> model;
  for (int steps = 0; steps < 200 && !input.IsEmpty(); ++steps) {
    if (input.Bool()) {
      StepStrings(input, strings);
    } else {
      StepNumbers(input, host, model);
    }
  }
  return 0;
}
