#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

namespace {

// The agent loads the library by its soname; the installed name must resolve and export its
// entry points without any other help.
TEST(KTRLibFunctionalityTest, LoadsBySonameAndExportsItsVersion) {
  const std::string path = std::string(KTR_LIBRARY_DIR) + "/libKTRFunctionality.so.7";
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(nullptr, handle) << dlerror();
  using VersionFn = const char* (*)();
  auto version = reinterpret_cast<VersionFn>(dlsym(handle, "ktrLibraryVersion"));
  ASSERT_NE(nullptr, version) << dlerror();
  EXPECT_STREQ("7.0", version());
  EXPECT_EQ(0, dlclose(handle));
}

}  // namespace
