// That the settings are freed when the library goes. The function under test is replaced by one that reports:
// the library finds its destructor by the exported name.
#include "zorvrcs.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

void unload_zorvrcs(void) {
  std::fputs("unload_zorvrcs has run\n", stderr);
}

namespace {

TEST(UnloadZorvrcs, RunsWhenTheLibraryIsUnloaded) {
  EXPECT_EXIT(
      {
        QuorConfNext(nullptr, nullptr);  // so that the library is needed
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "unload_zorvrcs has run");
}

}  // namespace
