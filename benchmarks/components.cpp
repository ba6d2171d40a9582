// What the component interfaces cost beside the functions below them.

#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <cstring>
#include <vector>

#include "benchmarks/components.h"
#include "benchmarks/median_reporter.h"
#include "benchmarks/our_store.h"

namespace {

using namespace zolt::bench;

constexpr char16_t kSection[] = u"Components bench";
constexpr char kNarrowSection[] = "Components bench";
constexpr char16_t kEmpty[] = u"Empty";
constexpr size_t kBlockSize = 4096;
constexpr size_t kManyValues = 1000;
constexpr double kSeconds = 0.1;

// A section with a value of 4 KiB and texts, and one with many values.
class Work {
 public:
  Work() : texts_(Names(kValues), kNarrowSection), many_(Names(kManyValues), "Many") {
    texts_.Fill();
    many_.Fill();
    std::vector<uint8_t> const block(kBlockSize, 7);
    UserPrefs()->WriteFree(texts_.section(), "block", REG_BINARY, block.data(), kBlockSize,
                           PrefLevelUser);
    UserPrefs()->SetStr(texts_.section(), "text", "a text of about thirty bytes in all");
    root_ = Root();
    storage_ = Storage(root_, kSection);
    properties_ = Properties(storage_);
    manyStorage_ = Storage(root_, u"Many");
    manyProperties_ = Properties(manyStorage_);
  }
  ~Work() {
    for (IUnknown *object : std::initializer_list<IUnknown *>{
             manyProperties_, manyStorage_, properties_, storage_, root_, manager_}) {
      object->Release();
    }
  }
  Work(Work const &) = delete;
  Work &operator=(Work const &) = delete;

  uint32_t section() const { return texts_.section(); }
  int32_t manyId() const { return static_cast<int32_t>(many_.section()); }
  IStorage *root() const { return root_; }
  IStorage *storage() const { return storage_; }
  IPropertyStorage *properties() const { return properties_; }
  IPropertyStorage *manyProperties() const { return manyProperties_; }

 private:
  IStorage *Root() {
    manager_ = CreateManager();
    IStorage *root = nullptr;
    Require(manager_->OpenRootStorage(0, &root) == S_OK, "the root did not open");
    return root;
  }

  OurLibrary library_;
  OurStore texts_;
  OurStore many_;
  IPrefManager *manager_ = nullptr;
  IStorage *root_ = nullptr;
  IStorage *storage_ = nullptr;
  IPropertyStorage *properties_ = nullptr;
  IStorage *manyStorage_ = nullptr;
  IPropertyStorage *manyProperties_ = nullptr;
};

using Body = void(benchmark::State &, Work const &);

void OpenSection(benchmark::State &state, Work const &work) {
  for ([[maybe_unused]] auto _ : state) {
    IStorage *section = nullptr;
    Require(work.root()->OpenStorage(kEmpty, nullptr, 0, nullptr, 0, &section) == S_OK,
            "a section did not open");
    section->Release();
  }
}

void RegisterSection(benchmark::State &state, Work const & /*work*/) {
  int32_t const id = GetUserPrefs()->GetIDFromString("Empty", 0);
  for ([[maybe_unused]] auto _ : state) {
    Require(RegisterPrefSection(id, "Empty") != 0, "a section was not registered");
    UnRegisterPrefSection(id, 0);
  }
}

void RequireBlock(std::vector<uint8_t> const &block, uint32_t size) {
  Require(size == kBlockSize && block.front() == 7 && block.back() == 7, "another block was read");
}

void OpenAndReadStream(benchmark::State &state, Work const &work) {
  std::vector<uint8_t> block(kBlockSize);
  ULONG size = 0;
  for ([[maybe_unused]] auto _ : state) {
    IStream *stream = nullptr;
    work.storage()->OpenStream(u"block", nullptr, STGM_READ, 0, &stream);
    stream->Read(block.data(), kBlockSize, &size);
    stream->Release();
  }
  RequireBlock(block, size);
}

void ReadFreeWithSize(benchmark::State &state, Work const &work) {
  std::vector<uint8_t> block(kBlockSize);
  uint32_t size = 0;
  for ([[maybe_unused]] auto _ : state) {
    UserPrefs()->ReadFree(work.section(), "block", REG_BINARY, nullptr, size, 0);
    UserPrefs()->ReadFree(work.section(), "block", REG_BINARY, block.data(), size, 0);
  }
  RequireBlock(block, size);
}

void ReadStream(benchmark::State &state, Work const &work) {
  std::vector<uint8_t> block(kBlockSize);
  ULONG size = 0;
  IStream *stream = nullptr;
  work.storage()->OpenStream(u"block", nullptr, STGM_READ, 0, &stream);
  for ([[maybe_unused]] auto _ : state) {
    stream->Seek({}, STREAM_SEEK_SET, nullptr);
    stream->Read(block.data(), kBlockSize, &size);
    benchmark::ClobberMemory();
  }
  stream->Release();
  RequireBlock(block, size);
}

void ReadFree(benchmark::State &state, Work const &work) {
  std::vector<uint8_t> block(kBlockSize);
  uint32_t size = 0;
  for ([[maybe_unused]] auto _ : state) {
    UserPrefs()->ReadFree(work.section(), "block", REG_BINARY, block.data(), size, 0);
  }
  RequireBlock(block, size);
}

void ReadProperty(benchmark::State &state, Work const &work) {
  char16_t name[] = u"text";
  PROPSPEC spec = {};
  spec.lpwstr = name;
  for ([[maybe_unused]] auto _ : state) {
    PROPVARIANT value = {};
    value.vt = VT_BSTR;
    work.properties()->ReadMultiple(1, &spec, &value);
    Require(SysStringLen(value.bstrVal) == 35, "another text was read");
    SysFreeString(value.bstrVal);
  }
}

void ReadStr(benchmark::State &state, Work const &work) {
  char text[kTextSize];
  for ([[maybe_unused]] auto _ : state) {
    UserPrefs()->ReadStr(work.section(), "text", text, "", 0);
    Require(std::strlen(text) == 35, "another text was read");
  }
}

void EnumProperties(benchmark::State &state, Work const &work) {
  for ([[maybe_unused]] auto _ : state) {
    IEnumSTATPROPSTG *walk = nullptr;
    work.manyProperties()->Enum(&walk);
    size_t count = 0;
    STATPROPSTG record = {};
    while (walk->Next(1, &record, nullptr) == S_OK) {
      CoTaskMemFree(record.lpwstrName);
      count++;
    }
    walk->Release();
    Require(count == kManyValues, "a walk did not meet all values");
  }
}

void EnumValues(benchmark::State &state, Work const &work) {
  for ([[maybe_unused]] auto _ : state) {
    CEnumPrefs *walk = GetUserPrefs()->GetEnum(0, work.manyId(), "Many");
    size_t count = 0;
    while (walk->Next() > 0) count++;
    walk->Release();
    Require(count == kManyValues, "a walk did not meet all values");
  }
}

void CreateClass(benchmark::State &state, Work const & /*work*/) {
  for ([[maybe_unused]] auto _ : state) CreateManager()->Release();
}

void CreateBare(benchmark::State &state, Work const & /*work*/) {
  Dl_info info = {};
  dladdr(reinterpret_cast<void *>(&DllGetClassObject), &info);
  void *const library = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
  Require(library != nullptr, "the library is not found");
  for ([[maybe_unused]] auto _ : state) {
    auto *const get =
        reinterpret_cast<decltype(&DllGetClassObject)>(dlsym(library, "DllGetClassObject"));
    IClassFactory *factory = nullptr;
    get(CLSID_PrefManager, IID_IClassFactory, reinterpret_cast<void **>(&factory));
    IPrefManager *manager = nullptr;
    factory->CreateInstance(nullptr, IID_IPrefManager, reinterpret_cast<void **>(&manager));
    factory->Release();
    manager->Release();
  }
  dlclose(library);
}

}  // namespace

int main() {
  DllRegisterServer();
  {
    Work const work;
    IStorage *empty = nullptr;
    Require(work.root()->CreateStorage(kEmpty, 0, 0, 0, &empty) == S_OK, "no section was made");
    empty->Release();
    struct {
      char const *name;
      Body *body;
    } const benchmarks[] = {
        {"component.open.ours", OpenSection},         {"component.open.plain", RegisterSection},
        {"component.stream.ours", OpenAndReadStream}, {"component.stream.plain", ReadFreeWithSize},
        {"component.again.ours", ReadStream},         {"component.again.plain", ReadFree},
        {"component.property.ours", ReadProperty},    {"component.property.plain", ReadStr},
        {"component.enum.ours", EnumProperties},      {"component.enum.plain", EnumValues},
        {"component.create.ours", CreateClass},       {"component.create.plain", CreateBare},
    };
    for (auto const &[name, body] : benchmarks) {
      auto const run = [body = body, &work](benchmark::State &state) { body(state, work); };
      benchmark::RegisterBenchmark(name, run)->MinTime(kSeconds);
    }
    RunInterleaved();
  }
  CoFreeUnusedLibraries();
  Require(DllCanUnloadNow() == S_OK, "a component was left");
}
