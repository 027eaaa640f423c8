#include "readrcs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "files.hpp"
#include "private_root.hpp"
#include "random_text.hpp"
#include "tls.h"
#include "zfxmemory.h"

namespace {

using support::EnvironmentVariable;

constexpr char kSystemFile[] = "/usr/local/zorv/sys/conf/quor.conf";
constexpr char kRootFile[] = "/.ZORVrcs";
constexpr uint32_t kNoKey = 0xFFFFFFFF;

std::optional<std::string> owned(char *answer) {
  if (answer == nullptr) return std::nullopt;
  std::string text = answer;
  ZfxFreeRCS(answer);
  return text;
}

// Runs the actions in a thread of their own, which has no copy of the file yet.
template <class Actions>
void in_a_thread(Actions actions) {
  std::thread(actions).join();
}

std::optional<std::string> ask(const char *name) {
  std::optional<std::string> text;
  in_a_thread([&] { text = owned(ZfxReadRCS(name, 7)); });
  return text;
}

class ReadRCS : public support::FixedPathsTest {
 protected:
  void SetUp() override {
    support::FixedPathsTest::SetUp();
    if (IsSkipped()) return;
    ::unsetenv("QUOR_LOG");
    ::unsetenv("NAME");
  }
  static std::optional<std::string> answer_of(const std::string &file, const char *name = "NAME") {
    support::write_file(kSystemFile, file);
    return ask(name);
  }
};

// First in the file: the library has no key yet.
TEST_F(ReadRCS, ClosesWithoutAKeyAsASuccess) {
  in_a_thread([] {
    EXPECT_EQ(ZfxCloseRCS(), 0);
    support::write_file(kSystemFile, "NAME=x\n");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "x");
  });
}

TEST_F(ReadRCS, AnswersWithTheValueOfALineWithoutItsComment) {
  EXPECT_EQ(answer_of("quor_log=/var/log/x  # comment\n", "QUOR_LOG"), "/var/log/x");
}

TEST_F(ReadRCS, TakesTheTextBeforeTheFirstEqualsSignWithItsBlanksForTheName) {
  EXPECT_EQ(answer_of("QUOR_LOG = /var/log/x\n", "QUOR_LOG"), std::nullopt);
  EXPECT_EQ(answer_of("QUOR_LOG = /var/log/x\n", "QUOR_LOG "), " /var/log/x");
  EXPECT_EQ(answer_of(" NAME=x\n"), std::nullopt);
  EXPECT_EQ(answer_of("NAME=a=b\n"), "a=b");
  EXPECT_EQ(answer_of("=x\n", ""), "x");
  EXPECT_EQ(answer_of("NAME\n"), std::nullopt);
  EXPECT_EQ(answer_of("NAMES=x\nNAM=y\n"), std::nullopt);
}

TEST_F(ReadRCS, IgnoresCaseInNames) {
  EXPECT_EQ(answer_of("nAmE=x\n"), "x");
  EXPECT_EQ(answer_of("NAME=x\n", "name"), "x");
}

TEST_F(ReadRCS, TakesTheFirstLineWithTheNameWhateverItsSection) {
  EXPECT_EQ(answer_of("[NONPRIVILEGED]\nNAME=first\n[PRIVILEGED]\nNAME=second\n"), "first");
}

TEST_F(ReadRCS, TakesHeadersAndCommentsForLinesLikeAnyOther) {
  EXPECT_EQ(answer_of("[A=b]\n", "[A"), "b]");
  EXPECT_EQ(answer_of("#NAME=x\n", "#NAME"), "x");
}

TEST_F(ReadRCS, ExpandsNothing) {
  EXPECT_EQ(answer_of("A=1\nNAME=$A${A}\n"), "$A${A}");
}

TEST_F(ReadRCS, CutsTheValueAtACommentButKeepsItsFirstCharacter) {
  EXPECT_EQ(answer_of("NAME=  x  \n"), "  x");
  EXPECT_EQ(answer_of("NAME=\n"), "");
  EXPECT_EQ(answer_of("NAME=#x\n"), "");
  EXPECT_EQ(answer_of("NAME= #x\n"), " ");
  EXPECT_EQ(answer_of("NAME= \t #x\n"), " ");
  EXPECT_EQ(answer_of("NAME=a#x\n"), "a");
  EXPECT_EQ(answer_of("NAME=a \t#x#y\n"), "a");
  EXPECT_EQ(answer_of("NAME=a b # x"), "a b");
}

TEST_F(ReadRCS, RemovesTrailingWhiteSpaceAndNeedsNoLineEnd) {
  EXPECT_EQ(answer_of("NAME=x \t\r\n"), "x");
  EXPECT_EQ(answer_of("NAME=x"), "x");
}

TEST_F(ReadRCS, TakesALongLineForSeveralOfAtMost510Characters) {
  const std::string start = "LONG=" + std::string(505, 'v');
  ASSERT_EQ(start.size(), 510U);
  EXPECT_EQ(answer_of(start + "NAME=rest" + std::string(81, 'r') + "\n", "LONG"), std::string(505, 'v'));
  EXPECT_EQ(answer_of(start + "NAME=rest" + std::string(81, 'r') + "\n"), "rest" + std::string(81, 'r'));
  for (const std::size_t length : {508U, 509U, 510U, 511U, 512U}) {
    const std::string value(length - 5, 'v');
    EXPECT_EQ(answer_of("LONG=" + value + "\nNAME=x\n", "LONG"), value.substr(0, 505)) << length;
    EXPECT_EQ(answer_of("LONG=" + value + "\nNAME=x\n"), "x") << length;
  }
}

TEST_F(ReadRCS, EndsALineAtAZeroByte) {
  EXPECT_EQ(answer_of(std::string("NAME=a\0b\nOTHER=c\n", 17)), "a");
  EXPECT_EQ(answer_of(std::string("NAME=a\0b\nOTHER=c\n", 17), "OTHER"), "c");
}

TEST_F(ReadRCS, ReadsTheFileInTheRootFolderWhenThereIsNoSystemFile) {
  support::write_file(kRootFile, "NAME=root\n");
  EXPECT_EQ(ask("NAME"), "root");
  EXPECT_EQ(answer_of("NAME=system\n"), "system");
  EXPECT_EQ(answer_of("OTHER=x\n"), std::nullopt);
}

TEST_F(ReadRCS, GivesNullWithoutAFileEvenWhenTheEnvironmentKnowsTheName) {
  const EnvironmentVariable variable("NAME", "environment");
  EXPECT_EQ(ask("NAME"), std::nullopt);
}

TEST_F(ReadRCS, TriesTheFilesAgainAfterThereWereNone) {
  in_a_thread([] {
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), std::nullopt);
    support::write_file(kSystemFile, "NAME=x\n");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "x");
  });
}

TEST_F(ReadRCS, PrefersTheEnvironmentAtTheFirstQuestionAndWithACopy) {
  in_a_thread([] {
    support::write_file(kSystemFile, "NAME=file\n");
    const EnvironmentVariable variable("NAME", "environment");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "environment");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "environment");
    ::unsetenv("NAME");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "file");
    ::setenv("NAME", "", 1);
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "");
  });
}

TEST_F(ReadRCS, ReadsAnEmptyFileAgainAtEachQuestion) {
  in_a_thread([] {
    support::write_file(kSystemFile, "");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), std::nullopt);
    {
      const EnvironmentVariable variable("NAME", "environment");
      EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "environment");
    }
    support::write_file(kSystemFile, "NAME=x\n");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "x");
  });
}

TEST_F(ReadRCS, KeepsAFileOfBlankLines) {
  in_a_thread([] {
    support::write_file(kSystemFile, "\n");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), std::nullopt);
    support::write_file(kSystemFile, "NAME=x\n");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), std::nullopt);
  });
}

TEST_F(ReadRCS, NeverReadsAFileASecondTimeInOneThread) {
  in_a_thread([] {
    support::write_file(kSystemFile, "NAME=old\n");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "old");
    support::write_file(kSystemFile, "NAME=new\n");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "old");
    EXPECT_EQ(ask("NAME"), "new");
  });
}

TEST_F(ReadRCS, DoesNotLookAtTheMask) {
  in_a_thread([] {
    support::write_file(kSystemFile, "NAME=x\n");
    for (const uint32_t mask : {0U, 1U, 7U, UINT32_MAX}) {
      EXPECT_EQ(owned(ZfxReadRCS("NAME", mask)), "x");
    }
  });
}

TEST_F(ReadRCS, GivesNullForANullName) {
  support::write_file(kSystemFile, "NAME=x\n");
  EXPECT_EQ(ZfxReadRCS(nullptr, 7), nullptr);
  EXPECT_EQ(ZfxReadTlsRCS(kNoKey, nullptr, 7), nullptr);
  ZfxFreeRCS(nullptr);
}

TEST_F(ReadRCS, TakesAFolderForAnEmptyFile) {
  std::filesystem::create_directories(kSystemFile);
  support::write_file(kRootFile, "NAME=x\n");
  EXPECT_EQ(ask("NAME"), std::nullopt);
  const EnvironmentVariable variable("NAME", "environment");
  EXPECT_EQ(ask("NAME"), "environment");
}

TEST_F(ReadRCS, LeavesNoDescriptorOpen) {
  in_a_thread([] {
    support::write_file(kSystemFile, "NAME=x\n");
    const int before = support::open_descriptors();
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "x");
    EXPECT_EQ(support::open_descriptors(), before);
  });
}

TEST_F(ReadRCS, ReadsALargeFile) {
  std::string file;
  while (file.size() < 10'000'000) {
    file += "SETTING_" + std::to_string(file.size()) + "=a value\n\n";
  }
  EXPECT_EQ(answer_of(file + "NAME=last\n"), "last");
}

// The rules once more, in the plainest form.
std::optional<std::string> model(const std::string &file, const std::string &name) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < file.size();) {
    std::size_t length = std::min<std::size_t>(510, file.size() - at);
    if (const std::size_t end = file.find('\n', at); end != std::string::npos && end - at < length) {
      length = end - at + 1;
    }
    lines.emplace_back(file.substr(at, length).c_str());
    at += length;
  }
  const std::string space = " \t\n\v\f\r";
  for (std::string &line : lines) {
    line.erase(line.find_last_not_of(space) + 1);
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos || ::strcasecmp(line.substr(0, equals).c_str(), name.c_str()) != 0) {
      continue;
    }
    std::string value = line.substr(equals + 1);
    if (const std::size_t comment = value.find('#'); comment != std::string::npos) {
      value.erase(comment);
      while (value.size() > 1 && space.find(value.back()) != std::string::npos) {
        value.pop_back();
      }
    }
    return value;
  }
  return std::nullopt;
}

TEST_F(ReadRCS, EqualsThePlainModelOnRandomFiles) {
  std::mt19937 random(7);
  const std::string alphabet("aAbB==  \t##\n\n\r\0x", 16);
  uint32_t key = 0;
  ASSERT_EQ(ZfxCreateTLS(&key, tlsRCSDealloc), 0);
  for (int round = 0; round < 3000; ++round) {
    std::string file = support::random_text(random, random() % 60, alphabet);
    if (random() % 4 == 0) file.insert(random() % (file.size() + 1), std::string(500 + random() % 20, 'x'));
    support::write_file(kSystemFile, file);
    for (const char *name : {"a", "AB", "", "b ", "x"}) {
      ASSERT_EQ(owned(ZfxReadTlsRCS(key, name, 7)), model(file, name)) << file;
    }
    ZfxCloseTlsRCS(key);
  }
  EXPECT_EQ(ZfxDeleteTLS(key), 0);
}

TEST_F(ReadRCS, KeepsCopiesApartByKey) {
  in_a_thread([] {
    uint32_t key = 0;
    ASSERT_EQ(ZfxCreateTLS(&key, tlsRCSDealloc), 0);
    EXPECT_EQ(ZfxOpenTlsRCS(key), 0);
    support::write_file(kSystemFile, "NAME=one\n");
    EXPECT_EQ(owned(ZfxReadTlsRCS(key, "NAME", 7)), "one");
    support::write_file(kSystemFile, "NAME=two\n");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "two");
    EXPECT_EQ(owned(ZfxReadTlsRCS(key, "NAME", 7)), "one");
    ZfxCloseTlsRCS(key);
    EXPECT_EQ(ZfxGetTLSValue(key), nullptr);
    EXPECT_EQ(owned(ZfxReadTlsRCS(key, "NAME", 7)), "two");
    ZfxCloseTlsRCS(key);
    EXPECT_EQ(ZfxDeleteTLS(key), 0);
  });
}

TEST_F(ReadRCS, AnswersUnderANumberThatIsNoKeyWithoutKeepingACopy) {
  support::write_file(kSystemFile, "NAME=one\n");
  EXPECT_EQ(owned(ZfxReadTlsRCS(kNoKey, "NAME", 7)), "one");
  support::write_file(kSystemFile, "NAME=two\n");
  EXPECT_EQ(owned(ZfxReadTlsRCS(kNoKey, "NAME", 7)), "two");
  EXPECT_EQ(ZfxOpenTlsRCS(kNoKey), EINVAL);
  ZfxCloseTlsRCS(kNoKey);
}

TEST_F(ReadRCS, OpensAKeyByForgettingTheThreadsCopyWithoutReadingTheFile) {
  uint32_t key = 0;
  ASSERT_EQ(ZfxCreateTLS(&key, tlsRCSDealloc), 0);
  char value[] = "no list";
  ASSERT_EQ(ZfxSetTLSValue(key, value), 0);
  EXPECT_EQ(ZfxOpenTlsRCS(key), 0);
  EXPECT_EQ(ZfxGetTLSValue(key), nullptr);
  EXPECT_EQ(ZfxDeleteTLS(key), 0);
}

TEST_F(ReadRCS, ReleasesThreadsCopiesOfBothKindsAtTheirEnd) {
  support::write_file(kSystemFile, "NAME=x\nOTHER=y\n");
  uint32_t key = 0;
  ASSERT_EQ(ZfxCreateTLS(&key, tlsRCSDealloc), 0);
  for (int round = 0; round < 20; ++round) {
    std::thread([key] {
      EXPECT_EQ(owned(ZfxReadTlsRCS(key, "OTHER", 7)), "y");
      EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "x");
    }).join();
  }
  EXPECT_EQ(ZfxDeleteTLS(key), 0);
}

TEST_F(ReadRCS, ReleasesACallersListWithoutTouchingTheLibrarysOwn) {
  in_a_thread([] {
    support::write_file(kSystemFile, "NAME=old\n");
    uint32_t key = 0;
    ASSERT_EQ(ZfxCreateTLS(&key, tlsRCSDealloc), 0);
    EXPECT_EQ(owned(ZfxReadTlsRCS(key, "NAME", 7)), "old");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "old");
    support::write_file(kSystemFile, "NAME=new\n");
    tlsRCSDealloc(ZfxGetTLSValue(key));
    tlsRCSDealloc(nullptr);
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "old");
    EXPECT_EQ(ZfxDeleteTLS(key), 0);
  });
}

std::vector<void *> thread_local_values() {
  std::vector<void *> values(1024);
  for (uint32_t key = 0; key < values.size(); ++key) {
    values[key] = ZfxGetTLSValue(key);
  }
  return values;
}

TEST_F(ReadRCS, ForgetsTheLibrarysOwnListWhenThatIsReleased) {
  in_a_thread([] {
    support::write_file(kSystemFile, "NAME=old\n");
    const std::vector<void *> before = thread_local_values();
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "old");
    support::write_file(kSystemFile, "NAME=new\n");
    // The list is under the library's own key, whose number nobody is told.
    const std::vector<void *> after = thread_local_values();
    const auto list = std::mismatch(after.begin(), after.end(), before.begin()).first;
    ASSERT_NE(list, after.end());
    tlsRCSDealloc(*list);
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "new");
  });
}

TEST_F(ReadRCS, ServesManyThreadsFromTheFirstCallOn) {
  support::write_file(kSystemFile, "NAME=x\n");
  std::vector<std::thread> threads;
  for (int i = 0; i < 16; ++i) {
    threads.emplace_back([] {
      for (int question = 0; question < 50; ++question) {
        EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "x");
      }
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
}

// Last in the file: nothing of this family works in the process from here on.
TEST_F(ReadRCS, GivesNullAfterTheCloseAndAnErrorForASecondOne) {
  in_a_thread([] {
    support::write_file(kSystemFile, "NAME=x\n");
    EXPECT_EQ(owned(ZfxReadRCS("NAME", 7)), "x");
    EXPECT_EQ(ZfxCloseRCS(), 0);
    // The number of the deleted key is given to whoever asks next.
    uint32_t foreign = 0;
    ASSERT_EQ(ZfxCreateTLS(&foreign, nullptr), 0);
    ASSERT_EQ(ZfxSetTLSValue(foreign, ZfxStrDup("foreign")), 0);
    EXPECT_EQ(ZfxReadRCS("NAME", 7), nullptr);
    EXPECT_EQ(ZfxCloseRCS(), EINVAL);
    EXPECT_STREQ(static_cast<char *>(ZfxGetTLSValue(foreign)), "foreign");
    ZfxMemFree(ZfxGetTLSValue(foreign));
    EXPECT_EQ(ZfxDeleteTLS(foreign), 0);
  });
}

}  // namespace
