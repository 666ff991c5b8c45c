#include "masslynx/scandata/compressed_data_cluster.h"

#include <cstddef>
#include <cstring>
#include <utility>

#include "common/platform/shared_library.h"

namespace zrml::masslynx {
namespace {

using platform::SharedLibrary;

constexpr std::string_view kLibrary = "cdt";
constexpr std::string_view kClass = "CompressedDataCluster";
constexpr int kSuccess = 0;

// Member functions as plain ones with the object in front, which is how both platforms call them. References
// are passed as addresses.
struct Operations {
  void* (*construct)(void* object, const char* path, int function) = nullptr;
  void (*initialise)(void* object, const char* path, int function) = nullptr;
  bool (*isInitialised)(void* object) = nullptr;
  int (*getNumberOfBlocks)(void* object, int* blocks) = nullptr;
  int (*getScansInBlock)(void* object, int* bins) = nullptr;
  int (*loadDataBlock)(void* object, int scan) = nullptr;
  int (*getScan)(void* object, int scan, int bin, int* indices, float* intensities, int* count) = nullptr;
  int (*getRT)(void* object, int scan, int bin, float* seconds) = nullptr;
  int (*getMassAxisLength)(void* object, int* length) = nullptr;
  int (*getMassAxis)(void* object, float* axis) = nullptr;
  void (*destroy)(void* object) = nullptr;  // null: through the object's table
};

template <class Signature>
bool Bind(SharedLibrary::Function function, Signature*& bound) {
  bound = reinterpret_cast<Signature*>(function);
  return bound != nullptr;
}

// False unless every operation is there.
bool BindAll(const SharedLibrary& library, Operations& operations) {
  const auto bind = [&](std::string_view name, std::string_view arguments, auto*& bound) {
    return Bind(library.FindMethod(kClass, name, arguments), bound);
  };
  Bind(library.FindDestructor(kClass), operations.destroy);
  return Bind(library.FindConstructor(kClass, "PEBDH@Z", "PKci"), operations.construct) &&
         bind("Initialise", "PKci", operations.initialise) &&
         bind("isInitialised", "v", operations.isInitialised) &&
         bind("getNumberOfBlocks", "Ri", operations.getNumberOfBlocks) &&
         bind("getScansInBlock", "Ri", operations.getScansInBlock) &&
         bind("loadDataBlock", "i", operations.loadDataBlock) &&
         bind("getScan", "iiPiPfRi", operations.getScan) && bind("getRT", "iiRf", operations.getRT) &&
         bind("getMassAxisLength", "Ri", operations.getMassAxisLength) &&
         bind("getMassAxis", "Pf", operations.getMassAxis);
}

// The result of `call`, or `failure` when the library throws, which is not expected.
template <class Call, class Result>
Result Guarded(Call call, Result failure) {
  try {
    return call();
  } catch (...) {
    return failure;
  }
}

class CompressedDataCluster : public MobilityCluster {
 public:
  explicit CompressedDataCluster(SharedLibrary library) : library_(std::move(library)) {}
  CompressedDataCluster(const CompressedDataCluster&) = delete;
  CompressedDataCluster& operator=(const CompressedDataCluster&) = delete;

  ~CompressedDataCluster() override {
    if (isConstructed_) Guarded([&] { return Destroy(), true; }, false);
  }

  /// False, and the object is of no use, when the library lacks an operation or the constructor throws.
  bool Construct(const std::string& path, int function) {
    isConstructed_ =
        BindAll(library_, operations_) &&
        Guarded([&] { return operations_.construct(Object(), path.c_str(), function), true; }, false);
    return isConstructed_;
  }

  void Initialise(const std::string& path, int function) override {
    isTurned_ =
        Guarded([&] { return operations_.initialise(Object(), path.c_str(), function), true; }, false);
  }
  bool IsInitialised() override {
    return isTurned_ && Guarded([&] { return operations_.isInitialised(Object()); }, false);
  }

  bool GetNumberOfBlocks(int& blocks) override {
    return Succeeds([&] { return operations_.getNumberOfBlocks(Object(), &blocks); });
  }
  bool GetScansInBlock(int& bins) override {
    return Succeeds([&] { return operations_.getScansInBlock(Object(), &bins); });
  }
  bool GetMassAxisLength(int& length) override {
    return Succeeds([&] { return operations_.getMassAxisLength(Object(), &length); });
  }
  bool GetMassAxis(float* axis) override {
    return Succeeds([&] { return operations_.getMassAxis(Object(), axis); });
  }
  bool LoadDataBlock(int scan) override {
    return Succeeds([&] { return operations_.loadDataBlock(Object(), scan); });
  }
  bool GetScan(int scan, int bin, int* indices, float* intensities, int& count) override {
    return Succeeds([&] { return operations_.getScan(Object(), scan, bin, indices, intensities, &count); });
  }
  bool GetRT(int scan, int bin, float& seconds) override {
    return Succeeds([&] { return operations_.getRT(Object(), scan, bin, &seconds); });
  }

 private:
  // Only the library knows the size of the class; this is far more than it can be.
  struct alignas(16) Block {
    std::byte bytes[std::size_t{64} << 10] = {};
  };

  template <class Call>
  static bool Succeeds(Call call) {
    return Guarded([&] { return call() == kSuccess; }, false);
  }

  void* Object() { return object_.bytes; }

  // Without an exported destructor, it is called through slot 0 of the table: on Windows with flags 0, which
  // does not free; elsewhere flags are ignored.
  void Destroy() {
    if (operations_.destroy != nullptr) return operations_.destroy(Object());
    using DestroyThroughTable = void* (*)(void* object, unsigned flags);
    const DestroyThroughTable* table = nullptr;
    std::memcpy(&table, Object(), sizeof table);
    if (table != nullptr) table[0](Object(), 0);
  }

  SharedLibrary library_;
  Operations operations_;
  bool isConstructed_ = false;
  bool isTurned_ = true;  // false: Initialise() has thrown
  Block object_;
};

}  // namespace

std::unique_ptr<MobilityCluster> OpenCompressedDataCluster(const std::string& path, int function) {
  SharedLibrary library = SharedLibrary::Load(kLibrary);
  if (!library.IsLoaded()) return nullptr;
  auto cluster = std::make_unique<CompressedDataCluster>(std::move(library));
  return cluster->Construct(path, function) ? std::move(cluster) : nullptr;
}

}  // namespace zrml::masslynx
