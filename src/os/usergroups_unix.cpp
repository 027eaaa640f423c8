// The group names of the real user. The numbers in the messages are part of their texts; support staff know
// them, so they stay with their causes however this file changes.
#include "usergroups_unix.h"

#include <grp.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <span>

#include "format.h"
#include "real_user.hpp"

namespace {

constexpr int kNoUserLine = 42;
constexpr int kNoCountLine = 65;
constexpr int kNoIdsLine = 83;
constexpr int kNoMemoryLine = 96;
constexpr int kNoGroupLine = 113;

struct GroupListDeleter {
  void operator()(char **list) const { ZfxFreeUserGroups(list); }
};
using UniqueGroupList = std::unique_ptr<char *, GroupListDeleter>;
using User = zorvcrt::DatabaseEntry<passwd>;
using Group = zorvcrt::DatabaseEntry<group>;

// The caller's area for messages, if there is one.
struct Message {
  char *text;
  int32_t capacity;

  [[nodiscard]] bool is_wanted() const { return text != nullptr; }
  void report_group_list(int line) const {
    string_format(text, capacity, "ZfxGetUserGroups line %d: Error #%d from getgrouplist()", line, errno);
  }
  void report_no_memory(int32_t entries) const {
    string_format(text, capacity,
                  "ZfxGetUserGroups line %d: Out of memory allocating external group names list (%d entries)",
                  kNoMemoryLine, entries);
  }
};

template <class T>
zorvcrt::UniqueBlock<T> allocate_array(int32_t count) {
  return zorvcrt::UniqueBlock<T>(static_cast<T *>(ZfxMemAlloc(static_cast<uint64_t>(count) * sizeof(T))));
}

// The ids of the user's groups, as many as `count` says; empty after a failure, which has been reported.
zorvcrt::UniqueBlock<gid_t> group_ids(const User &user, int32_t &count, const Message &message) {
  const int32_t expected = count;
  auto ids = allocate_array<gid_t>(expected + 1);
  const int found = ids == nullptr ? -1 : ::getgrouplist(user->pw_name, user->pw_gid, ids.get(), &count);
  if (found == -1 && message.is_wanted()) {
    message.report_group_list(kNoIdsLine);
    return nullptr;
  }
  count = std::clamp(count, 0, expected);  // more may have come up since they were counted
  return ids;
}

bool look_up_group(gid_t id, Group &entry) {
  return entry.look_up([id](group *found, char *area, std::size_t size, group **result) {
    return ::getgrgid_r(id, found, area, size, result);
  });
}

// Puts the names into the list, which has room for them; their number, or -1 when memory is short.
int32_t list_names(std::span<const gid_t> ids, char **list, const Message &message) {
  int32_t count = 0;
  Group entry;
  for (const gid_t id : ids) {
    if (!look_up_group(id, entry)) {
      string_format(message.text, message.capacity, "ZfxGetUserGroups line %d: Error #%d from getgrgid()",
                    kNoGroupLine, errno);
      continue;
    }
    list[count] = ZfxStrDup(entry->gr_name);
    if (list[count] == nullptr) return -1;
    ++count;
  }
  return count;
}

int32_t get_user_groups(UniqueGroupList &list, int32_t &count, const Message &message) {
  User user;
  if (!zorvcrt::look_up_real_user(user)) {
    string_format(message.text, message.capacity, "ZfxGetUserGroups line %d: Error %d in getpwuid(): %s",
                  kNoUserLine, errno, "");
    return -1;
  }
  int32_t groups = 0;
  errno = 0;
  if (::getgrouplist(user->pw_name, user->pw_gid, nullptr, &groups) == -1 && groups == 0) {
    if (errno == 0) return 0;
    message.report_group_list(kNoCountLine);
    return -1;
  }
  groups = std::clamp(groups, 0, INT32_MAX - 1);
  const auto ids = group_ids(user, groups, message);
  if (ids == nullptr) return -1;
  list.reset(allocate_array<char *>(groups + 1).release());
  if (list == nullptr) {
    message.report_no_memory(groups);
    return message.is_wanted() ? -1 : 0;
  }
  const int32_t names = list_names({ids.get(), static_cast<std::size_t>(groups)}, list.get(), message);
  if (names < 0) {
    message.report_no_memory(groups);
    list.reset();
    return -1;
  }
  count = names;
  return 0;
}

}  // namespace

int32_t ZfxGetUserGroups(char ***list, int32_t *count, char *message, int32_t message_capacity) {
  if (count != nullptr) *count = 0;
  if (list == nullptr) {
    errno = EINVAL;
    return -1;
  }
  UniqueGroupList groups;
  int32_t names = 0;
  const int32_t result = get_user_groups(groups, names, {message, message_capacity});
  *list = groups.release();
  if (count != nullptr) *count = names;
  return result;
}

void ZfxFreeUserGroups(char **list) {
  if (list == nullptr) return;
  for (char **name = list; *name != nullptr; ++name) {
    ZfxMemFree(*name);
  }
  ZfxMemFree(list);
}
