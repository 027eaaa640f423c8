#include <gtest/gtest.h>
#include <sys/resource.h>

#include "run.hpp"

namespace {

using support::run_zorvcrt;

TEST(ExecCommand, EndsAsTheProgramDoes) {
  EXPECT_EQ(run_zorvcrt({"exec", "true"}).status, 0);
  EXPECT_EQ(run_zorvcrt({"exec", "sh -c 'exit 7'"}).status, 7);
  EXPECT_EQ(run_zorvcrt({"exec", "nonexistent-program"}).status, 1);
}

TEST(ExecCommand, HandsTheStandardHandlesOn) {
  const auto outcome = run_zorvcrt({"exec", "sh -c 'cat; echo complaint >&2'"}, "input\n");
  EXPECT_EQ(outcome.output, "input\n");
  EXPECT_EQ(outcome.errors, "complaint\n");
}

TEST(ExecCommand, TellsTheSignalThatEndedTheProgram) {
  const rlimit no_core = {0, 0};
  ::setrlimit(RLIMIT_CORE, &no_core);
  const auto killed = run_zorvcrt({"exec", "sh -c 'kill -9 $$'"});
  EXPECT_EQ(killed.status, 128 + 9);
  EXPECT_EQ(killed.errors, "zorvcrt exec: ended by signal 9\n");
  EXPECT_EQ(run_zorvcrt({"exec", "true 'open"}).status, 128 + 11);
}

TEST(ExecCommand, KillsAProgramThatDoesNotEndInTime) {
  for (const char *command : {"sleep 1000", "sh -c 'kill -STOP $$'"}) {
    const auto outcome = run_zorvcrt({"exec", "--timeout", "20", command});
    EXPECT_EQ(outcome.status, 124);
    EXPECT_EQ(outcome.errors, "zorvcrt exec: not ended after 20 ms, killed\n");
  }
}

TEST(ExecCommand, EndsAsTheProgramDoesInTime) {
  EXPECT_EQ(run_zorvcrt({"exec", "--timeout", "60000", "sh -c 'exit 7'"}).status, 7);
  const auto killed = run_zorvcrt({"exec", "--timeout", "60000", "sh -c 'kill -9 $$'"});
  EXPECT_EQ(killed.status, 128 + 9);
  EXPECT_EQ(killed.errors, "zorvcrt exec: ended by signal 9\n");
}

TEST(ExecCommand, WaitsOnForAProgramThatIsStoppedAndContinues) {
  const char *command = "sh -c '(sleep 0.05; kill -CONT $$) & kill -STOP $$; exit 7'";
  EXPECT_EQ(run_zorvcrt({"exec", "--timeout", "60000", command}).status, 7);
}

TEST(ExecCommand, RefusesOtherThanOneCommandAndATime) {
  EXPECT_EQ(run_zorvcrt({"exec"}).status, 2);
  EXPECT_EQ(run_zorvcrt({"exec", "sleep", "1"}).status, 2);
  for (const char *time : {"-1", "x", "", "1s", "2147483648"}) {
    EXPECT_EQ(run_zorvcrt({"exec", "--timeout", time, "true"}).status, 2) << time;
  }
}

TEST(ExecCommandSignals, TellsHowAProgramEndedUnderAParentThatIgnoresItsChildren) {
  const auto outcome =
      support::run({"sh", "-c", "trap '' CHLD; exec \"$0\" exec --timeout 5000 'sh -c \"exit 7\"'",
                    ZORVCRT_BINARY_DIR "/tools/zorvcrt"});
  EXPECT_EQ(outcome.status, 7) << outcome.errors;
}

}  // namespace
