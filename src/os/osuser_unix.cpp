// The login name of the real user. The number in the message is part of its text.
#include "osuser_unix.h"

#include <cstring>

#include "fixed_text.hpp"
#include "format.h"
#include "real_user.hpp"

namespace {

constexpr int kInvalidArgumentsLine = 28;

}  // namespace

int32_t ZfxGetOSUser(char *user, int64_t user_size, char *second, int64_t /*unused*/, char *message,
                     int32_t message_capacity) {
  if (user == nullptr || user_size < 1) {
    string_format(message, message_capacity,
                  "ZfxGetOSUser line %d: Invalid argument(s) vvuserp=%p vlusrszi=%lld", kInvalidArgumentsLine,
                  static_cast<const void *>(user), static_cast<long long>(user_size));
    return -1;
  }
  std::memset(user, '\0', static_cast<std::size_t>(user_size));
  if (second != nullptr) *second = '\0';

  zorvcrt::DatabaseEntry<passwd> entry;
  if (!zorvcrt::look_up_real_user(entry)) return -1;
  zorvcrt::copy_text(user, user_size, zorvcrt::view_of(entry->pw_name));
  return 0;
}
