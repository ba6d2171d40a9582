#include "zolt41/platform/com/com_create.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cstdlib>
#include <tuple>

#include "tests/support/child.h"
#include "tests/support/files.h"
#include "tests/support/key.h"
#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/ref_counted.h"
#include "zolt41/platform/registry/classes_root.h"

namespace zolt::testing {
namespace {

namespace fs = std::filesystem;

// Any id will do; this one the module knows.
constexpr CLSID kClass = IID_IClassFactory;
constexpr char kClassKey[] = "{00000001-0000-0000-C000-000000000046}";

class CreateTest : public FileTest {
 protected:
  CreateTest() { fs::copy_file(ZOLT_TEST_MODULE, module_); }
  ~CreateTest() override {
    Unload();
    EXPECT_FALSE(Loaded());
  }
  static void Unload() {
    setenv("ZOLT_TEST_UNLOAD", "1", 1);
    CoFreeUnusedLibraries();
    unsetenv("ZOLT_TEST_UNLOAD");
  }

  static void Register(std::string const &path, HKEY root = HKEY_CURRENT_USER) {
    HKEY classes = 0;
    ASSERT_EQ(MakeClasses(root, &classes), ERROR_SUCCESS);
    Key const ids(classes, "CLSID");
    Key const id(ids.handle, kClassKey);
    Key(id.handle, "InprocServer32").Set("", path);
    Key const name(classes, "Test.Class");
    Key(name.handle, "CLSID").Set("", kClassKey);
    RegCloseKey(classes);
  }
  static HRESULT Create(ComPtr<IUnknown> *object) {
    return CoCreateInstance(kClass, nullptr, CLSCTX_ALL, IID_IUnknown, object->VoidPlace());
  }
  static HRESULT Result() {
    ComPtr<IUnknown> object;
    HRESULT const result = Create(&object);
    EXPECT_EQ(static_cast<bool>(object), result == S_OK);
    return result;
  }
  bool Loaded() const {
    void *const handle = dlopen(module_.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
  }

  std::string module_ = Path("module.so");
};

TEST_F(CreateTest, LoadsAModuleOnceAndUnloadsItWhenItSaysSo) {
  Register(module_);
  ComPtr<IUnknown> object;
  ASSERT_EQ(Create(&object), S_OK);
  EXPECT_EQ(Result(), S_OK);
  object.Reset();
  CoFreeUnusedLibraries();
  EXPECT_TRUE(Loaded()) << "it says no";
  Unload();
  EXPECT_FALSE(Loaded());
  EXPECT_EQ(Result(), S_OK) << "and is loaded again";
}

TEST_F(CreateTest, AClassHasANameToo) {
  Register(module_, HKEY_LOCAL_MACHINE);
  CLSID id = GUID_NULL;
  EXPECT_EQ(CLSIDFromProgID(u"test.class", &id), S_OK);
  EXPECT_EQ(id, kClass);
  for (char16_t const *name : {u"", u"Test", u"Test.Class\u0100", u"CLSID"}) {
    EXPECT_EQ(CLSIDFromProgID(name, &id), CO_E_CLASSSTRING);
    EXPECT_EQ(id, GUID_NULL);
  }
  EXPECT_EQ(CLSIDFromProgID(nullptr, &id), E_INVALIDARG);
  EXPECT_EQ(CLSIDFromProgID(u"Test.Class", nullptr), E_INVALIDARG);
}

TEST_F(CreateTest, TheUsersClassComesBeforeTheMachines) {
  Register(module_, HKEY_LOCAL_MACHINE);
  EXPECT_EQ(Result(), S_OK);
  Register("/missing/module.so");
  EXPECT_EQ(Result(), CO_E_DLLNOTFOUND);
  Key const id(HKEY_CLASSES_ROOT, "CLSID");
  HKEY key = 0;
  ASSERT_EQ(RegOpenKeyExA(id.handle, kClassKey, 0, KEY_ALL_ACCESS, &key), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyA(key, "InprocServer32"), ERROR_SUCCESS);
  RegCloseKey(key);
  EXPECT_EQ(Result(), S_OK) << "the machine's again";
}

TEST_F(CreateTest, LoadsModulesThatOthersCannotHaveChanged) {
  std::string const folder = Path("folder");
  std::string const inFolder = folder + "/module.so";
  std::string const link = Path("link.so");
  std::string const chain = Path("chain.so");
  fs::create_directory(folder);
  fs::copy_file(module_, inFolder);
  fs::create_symlink(inFolder, link);
  fs::create_symlink("folder/../folder/middle.so", chain);
  fs::create_symlink(module_, folder + "/middle.so");
  fs::create_directory_symlink("folder", Path("other"));
  fs::create_symlink("round.so", Path("round.so"));
  WriteContent(folder + "/text.so", "no module");
  std::tuple<std::string, mode_t, mode_t, HRESULT> const cases[] = {
      {inFolder, 0755, 0755, S_OK},
      {link, 0755, 0755, S_OK},
      {inFolder, 0757, 0755, E_ACCESSDENIED},
      {inFolder, 0775, 0755, E_ACCESSDENIED},
      {inFolder, 0755, 0777, E_ACCESSDENIED},
      {link, 0755, 0777, E_ACCESSDENIED},
      {folder + "/../module.so", 0755, 0777, E_ACCESSDENIED},
      {chain, 0755, 0755, S_OK},
      {chain, 0755, 0777, E_ACCESSDENIED},
      {Path("/./other/middle.so"), 0755, 0755, S_OK},
      {Path("other/../module.so"), 0755, 0777, E_ACCESSDENIED},
      {Path("round.so"), 0755, 0755, CO_E_DLLNOTFOUND},
      {module_ + "/x.so", 0755, 0755, CO_E_DLLNOTFOUND},
      {inFolder, 0755, 01777, S_OK},
      {folder, 0755, 0755, E_ACCESSDENIED},
      {"module.so", 0755, 0755, E_ACCESSDENIED},
      {"", 0755, 0755, REGDB_E_CLASSNOTREG},
      {"/dev/null", 0755, 0755, E_ACCESSDENIED},
      {folder + "/none.so", 0755, 0755, CO_E_DLLNOTFOUND},
      {folder + "/text.so", 0755, 0755, CO_E_ERRORINDLL}};
  for (auto const &[path, fileMode, folderMode, result] : cases) {
    chmod(inFolder.c_str(), fileMode);
    chmod(folder.c_str(), folderMode);
    Register(path);
    EXPECT_EQ(Result(), result) << path << std::oct << fileMode << folderMode;
    Unload();
    bool const isModule = result != CO_E_ERRORINDLL;
    char offender[256] = "-";
    HRESULT const check = ZOLTCheckModule(path.c_str(), offender, sizeof offender);
    EXPECT_TRUE(check == result || !isModule || path.empty()) << path;
    if (check == E_ACCESSDENIED) {
      EXPECT_EQ(offender == folder, folderMode == 0777 || path == folder) << path;
    }
  }
}

// A factory's CreateInstance, in which the module says that it is not used.
TEST_F(CreateTest, AModuleStaysWhileItsFactoryWorks) {
  struct Outer final : RefCounted<IUnknown, IID_IUnknown> {
    ULONG AddRef() override {
      Unload();
      return RefCounted::AddRef();
    }
  };
  ComPtr<IUnknown> const outer(new Outer);
  Register(module_);
  void *out = nullptr;
  EXPECT_EQ(CoCreateInstance(kClass, outer.get(), 1, IID_IUnknown, &out), CLASS_E_NOAGGREGATION);
  EXPECT_TRUE(Loaded());
}

TEST_F(CreateTest, AChildThatIsForkedMeanwhileCreates) {
  Register(module_);
  // The first use makes the locks, and has them looked after in forks.
  EXPECT_EQ(Result(), S_OK);
  ForkMeanwhile(
      [] {
        EXPECT_EQ(Result(), S_OK);
        CoFreeUnusedLibraries();
      },
      [] { return Result() == S_OK; });
}

TEST_F(CreateTest, ArgumentsAreAnswered) {
  Register(module_);
  void *out = &out;
  EXPECT_EQ(CoCreateInstance(kClass, nullptr, CLSCTX_ALL, IID_IUnknown, nullptr), E_INVALIDARG);
  EXPECT_EQ(CoCreateInstance(kClass, nullptr, 4, IID_IUnknown, &out), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(CoCreateInstance(GUID_NULL, nullptr, 1, IID_IUnknown, &out), REGDB_E_CLASSNOTREG);
  ComPtr<IUnknown> object;
  ASSERT_EQ(Create(&object), S_OK);
  EXPECT_EQ(CoCreateInstance(kClass, object.get(), 1, IID_IUnknown, &out), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(CoGetClassObject(kClass, 1, &out, IID_IClassFactory, &out), E_INVALIDARG);
  EXPECT_EQ(CoGetClassObject(kClass, 1, nullptr, IID_IConnectionPoint, &out), E_NOINTERFACE);
}

}  // namespace
}  // namespace zolt::testing
