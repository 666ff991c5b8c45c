#include "plugin/provider_table.h"

#ifdef _WIN32
#include "plugin/hostabi/face.h"
#include "plugin/hostabi/face_client.h"
#endif

namespace zrml {

HostInstance* MakeInstance(std::unique_ptr<CDataServerImpl> server) {
#ifdef _WIN32
  return hostabi::MakeFace(std::move(server));
#else
  return server.release();
#endif
}

std::unique_ptr<CDataServerImpl> CreateServer(GetInstanceFunction getInstance, std::uint64_t index) {
  HostInstance* instance = nullptr;
  if (!getInstance(index, &instance)) return nullptr;
#ifdef _WIN32
  return hostabi::ServerOfFace(instance);
#else
  return std::unique_ptr<CDataServerImpl>(instance);
#endif
}

}  // namespace zrml
