// Taking root's rights away for a while.
#pragma once

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace support {

/// Lets the permissions of files hold for root, too.
class WithoutCapabilities {
 public:
  WithoutCapabilities() {
    EXPECT_EQ(::syscall(SYS_capget, &header_, before_), 0);
    __user_cap_data_struct without[2] = {before_[0], before_[1]};
    without[0].effective = without[1].effective = 0;
    EXPECT_EQ(::syscall(SYS_capset, &header_, without), 0);
  }
  ~WithoutCapabilities() { ::syscall(SYS_capset, &header_, before_); }
  WithoutCapabilities(const WithoutCapabilities &) = delete;
  WithoutCapabilities &operator=(const WithoutCapabilities &) = delete;

 private:
  __user_cap_header_struct header_ = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct before_[2] = {};
};

}  // namespace support
