#include "dynlib.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <thread>

#include "zfxmemory.h"

namespace {

const std::string kSample = ZORVCRT_BINARY_DIR "/tests/dynlib_sample.so";
const std::string kIncomplete = ZORVCRT_BINARY_DIR "/tests/dynlib_incomplete.so";

bool is_loaded(const std::string &path) {
  void *handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) ::dlclose(handle);
  return handle != nullptr;
}

std::string pending_error() {
  char text[1024] = "?";
  return GetDynLoadError(text, sizeof text);
}

TEST(LoadDynLib, StoresHandleAndPathAndFindsSymbols) {
  DynLib *library = nullptr;
  ASSERT_EQ(LoadDynLib(kSample.c_str(), &library), 0);
  EXPECT_EQ(library->path, kSample);
  void *address = nullptr;
  ASSERT_EQ(LoadProc(library, 99, "sample_answer", &address), 0);
  EXPECT_EQ(reinterpret_cast<int (*)()>(address)(), 42);
  ASSERT_EQ(LoadProc(library, 99, "sample_value", &address), 0);
  EXPECT_EQ(*static_cast<int *>(address), 7);
  EXPECT_EQ(address, ::dlsym(library->handle, "sample_value"));
  UnloadDynLib(library);
}

TEST(LoadDynLib, FailsWithFourAndStoresNullForALibraryThatIsMissing) {
  DynLib other = {};
  DynLib *library = &other;
  EXPECT_EQ(LoadDynLib("no-such-library.so", &library), 4);
  EXPECT_EQ(library, nullptr);
  EXPECT_NE(pending_error().find("no-such-library.so"), std::string::npos);
  EXPECT_EQ(LoadDynLib(kSample.c_str(), nullptr), 4);
}

TEST(LoadDynLib, FailsForALibraryWithASymbolThatIsNowhere) {
  DynLib *library = nullptr;
  EXPECT_EQ(LoadDynLib(kIncomplete.c_str(), &library), 4);
  EXPECT_NE(pending_error().find("defined_nowhere"), std::string::npos);
}

TEST(LoadDynLib, CutsTheStoredPathToItsRoom) {
  const std::string tail = kSample.substr(1);
  for (const std::size_t length : {254U, 255U, 256U, 257U, 1000U}) {
    const std::string path = std::string(length - tail.size(), '/') + tail;
    DynLib *library = nullptr;
    ASSERT_EQ(LoadDynLib(path.c_str(), &library), 0);
    EXPECT_EQ(library->path, path.substr(0, 255));
    UnloadDynLib(library);
  }
}

TEST(LoadDynLib, TakesNullForTheProgramItself) {
  DynLib *library = nullptr;
  ASSERT_EQ(LoadDynLib(nullptr, &library), 0);
  EXPECT_STREQ(library->path, "");
  void *address = nullptr;
  EXPECT_EQ(LoadProc(library, 0, "LoadDynLib", &address), 0);
  UnloadDynLib(library);
}

TEST(LoadProc, FailsWithEightAndStoresNullForAMissingSymbol) {
  DynLib *library = nullptr;
  ASSERT_EQ(LoadDynLib(kSample.c_str(), &library), 0);
  void *address = &library;
  EXPECT_EQ(LoadProc(library, 0, "no_such_symbol", &address), 8);
  EXPECT_EQ(address, nullptr);
  EXPECT_EQ(LoadProc(library, 0, "no_such_symbol", nullptr), 8);
  EXPECT_EQ(LoadProc(library, 0, "sample_answer", nullptr), 0);
  UnloadDynLib(library);
}

TEST(LoadProc, FindsNothingWithoutALibraryOrAName) {
  DynLib *library = nullptr;
  ASSERT_EQ(LoadDynLib(kSample.c_str(), &library), 0);
  void *address = &library;
  EXPECT_EQ(LoadProc(nullptr, 0, "sample_answer", &address), 8);
  EXPECT_EQ(address, nullptr);
  address = &library;
  EXPECT_EQ(LoadProc(library, 0, nullptr, &address), 8);
  EXPECT_EQ(address, nullptr);
  UnloadDynLib(library);
}

TEST(UnloadDynLib, ReleasesTheRecordAndLeavesTheLibraryLoaded) {
  for (void (*release)(DynLib *) : {UnloadDynLib, ReleaseDynLibHandle}) {
    DynLib *library = nullptr;
    ASSERT_EQ(LoadDynLib(kSample.c_str(), &library), 0);
    void *address = nullptr;
    ASSERT_EQ(LoadProc(library, 0, "sample_answer", &address), 0);
    release(library);  // a leak of the record shows in the instrumented builds
    EXPECT_TRUE(is_loaded(kSample));
    EXPECT_EQ(reinterpret_cast<int (*)()>(address)(), 42);
    release(nullptr);
  }
}

TEST(GetDynLoadError, SaysUnknownErrorWhenNoneIsPending) {
  pending_error();
  EXPECT_EQ(pending_error(), "Unknown error.");
}

TEST(GetDynLoadError, TakesTheErrorSoThatItIsNotPendingAnyMore) {
  DynLib *library = nullptr;
  LoadDynLib("no-such-library.so", &library);
  EXPECT_NE(pending_error(), "Unknown error.");
  EXPECT_EQ(pending_error(), "Unknown error.");
  LoadDynLib("no-such-library.so", &library);
  EXPECT_EQ(GetDynLoadError(nullptr, 10), nullptr);
  EXPECT_EQ(pending_error(), "Unknown error.");
}

TEST(GetDynLoadError, CutsTheTextToTheCapacity) {
  DynLib *library = nullptr;
  LoadDynLib("no-such-library.so", &library);
  const std::string whole = pending_error();
  for (auto *get : {GetDynLoadError, GetDynLoadErrorV}) {
    for (uint32_t capacity = 1; capacity < whole.size() + 3; ++capacity) {
      LoadDynLib("no-such-library.so", &library);
      std::string area(whole.size() + 8, '?');
      EXPECT_EQ(get(area.data(), capacity), area.data());
      EXPECT_STREQ(area.c_str(), whole.substr(0, capacity - 1).c_str());
      EXPECT_EQ(area[capacity], '?');
    }
    char none[] = "?";
    EXPECT_EQ(get(none, 0), none);
    EXPECT_STREQ(none, "?");
  }
  char five[5] = "";
  LoadDynLib("no-such-library.so", &library);
  EXPECT_STREQ(GetDynLoadError(five, 5), "no-s");
}

TEST(GetDynLoadError, BelongsToTheThread) {
  DynLib *library = nullptr;
  LoadDynLib("no-such-library.so", &library);
  std::string other;
  std::thread([&other] { other = pending_error(); }).join();
  EXPECT_EQ(other, "Unknown error.");
  EXPECT_NE(pending_error(), "Unknown error.");
}

TEST(GetDLError, GivesUpTo254BytesInOneArea) {
  const std::string name(400, 'n');
  DynLib *library = nullptr;
  LoadDynLib(name.c_str(), &library);
  const char *text = GetDLError();
  EXPECT_EQ(text, name.substr(0, 254));
  EXPECT_EQ(GetDLError(), text);
  EXPECT_STREQ(text, "Unknown error.");
}

}  // namespace
