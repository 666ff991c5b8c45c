#include "plugin/hostabi/face.h"

#include <cstddef>
#include <new>
#include <tuple>

#include "plugin/hostabi/crossing.h"
#include "plugin/hostabi/failure.h"
#include "plugin/hostabi/slots.h"

namespace zrml::hostabi {
namespace {

// Calls one operation with the arguments from the host.
template <auto Operation, class... Args>
auto Forward(CDataServerImpl& server, WireOf<Args>... wires) {
  std::tuple<Inbound<Args>...> arguments{Inbound<Args>(wires)...};
  return std::apply(
      [&](auto&... argument) {
        auto result = (server.*Operation)(argument.Value()...);
        (argument.Commit(), ...);
        return result;
      },
      arguments);
}

// The entry of one operation in the host's table. Its frame needs no clean-up, so the host's exception may
// pass through it.
template <auto Operation, class Result, class... Args>
struct Thunk {
  static Result Call(Face* face, WireOf<Args>... wires) {
    Result result{};
    const Failure failure = Guarded([&] { result = Forward<Operation, Args...>(*face->server, wires...); });
    if (failure != Failure::kNone) RaiseInHost(failure);
    return result;
  }
};

// A string is constructed in storage provided by the host, and its address returned.
template <auto Operation, class... Args>
struct Thunk<Operation, std::wstring, Args...> {
  static HostString* Call(Face* face, HostString* result, WireOf<Args>... wires) {
    const Failure failure = Guarded([&] {
      new (result) HostString(std::wstring_view(Forward<Operation, Args...>(*face->server, wires...)));
    });
    if (failure != Failure::kNone) {
      RaiseInHost(failure);
      new (result) HostString();
    }
    return result;
  }
};

void* Destroy(Face* face, unsigned flags) {
  face->server.reset();
  if ((flags & 1) != 0) delete face;
  return face;
}

template <auto Operation, class Type = decltype(Operation)>
struct ThunkOf;

template <auto Operation, class Result, class... Args>
struct ThunkOf<Operation, Result (CDataServerImpl::*)(Args...)> : Thunk<Operation, Result, Args...> {};

// The functions of slots 1 to 50 in order, each with its own type.
template <auto First, auto... Rest>
struct Slots {
  decltype(&ThunkOf<First>::Call) function = &ThunkOf<First>::Call;
  Slots<Rest...> rest = {};
};

template <auto Last>
struct Slots<Last> {
  decltype(&ThunkOf<Last>::Call) function = &ThunkOf<Last>::Call;
};

template <auto... All>
Slots<All...> SlotsOf(OperationList<All...>);

struct Table {
  const void* locator = nullptr;  // of run-time type data; hosts never ask for it
  void* (*destroy)(Face* face, unsigned flags) = Destroy;
  decltype(SlotsOf(Operations())) operations = {};
};
static_assert(sizeof(Table) == (1 + Operations::kSlotCount) * sizeof(void*));

constinit const Table kTable = {};

}  // namespace

static_assert(offsetof(Face, table) == 0);

Face* MakeFace(std::unique_ptr<CDataServerImpl> server) {
  return new Face{reinterpret_cast<const void* const*>(&kTable.destroy), std::move(server)};
}

}  // namespace zrml::hostabi
