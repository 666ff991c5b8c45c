// Access to members of the containers by their offset in the contract with hosts (docs/host-contract.md): for
// members without an operation, and to check the offsets.
#pragma once

#include <cstddef>

namespace zrml {

template <class T, class Container>
T& ContractMember(Container& container, std::size_t offset) {
  return *reinterpret_cast<T*>(reinterpret_cast<std::byte*>(&container) + offset);
}

}  // namespace zrml
