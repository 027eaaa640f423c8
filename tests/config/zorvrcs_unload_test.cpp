// That the settings are freed when the library goes. The function under test is replaced by one that reports:
// the library finds its destructor by the exported name.
#include "zorvrcs.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

bool is_reported = false;  // runs at the end of every process of this program

}  // namespace

void unload_zorvrcs(void) {
  if (is_reported) std::fputs("unload_zorvrcs has run\n", stderr);
}

namespace {

TEST(UnloadZorvrcs, RunsWhenTheLibraryIsUnloaded) {
  EXPECT_EXIT(
      {
        is_reported = true;
        QuorConfNext(nullptr, nullptr);  // so that the library is needed
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "unload_zorvrcs has run");
}

}  // namespace
