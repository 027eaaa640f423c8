// The time text is made once per second and thread and kept. Made anew for every line it costs more than the
// line's write: without TZ, tzset() asks the file system each time whether the zone file has been replaced.
#include "time_text.hpp"

#include <langinfo.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "fixed_text.hpp"

namespace {

constexpr std::size_t kShownBytes = 19;
constexpr std::size_t kNameBytes = 3;  // of a day's or month's name, whatever the locale
constexpr std::size_t kMonthOffset = 4;
constexpr std::size_t kKeptZone = 64;
constexpr std::size_t kTimeTextRoom = 64;  // asctime_r() asks for 26

// The text with all that it depends on. A zone text too long to be kept leaves the text not reusable.
struct KeptTime {
  std::time_t second;
  bool reusable;
  bool has_zone;
  int weekday;
  int month;
  std::array<char, kKeptZone> zone;
  std::array<char, kShownBytes + 1> text;
  std::size_t size;
};

// The TLS model that reaches the variable without a call into the dynamic loader, which would be one more
// library to need; it takes its few bytes from the room that the C library keeps for libraries loaded late.
__attribute__((tls_model("initial-exec"))) constinit thread_local KeptTime kept{};

bool is_same_zone(const char *zone) {
  return zone == nullptr ? !kept.has_zone : kept.has_zone && std::strcmp(zone, kept.zone.data()) == 0;
}

// Tells whether the locale in force has the names that the kept text begins with.
bool has_same_names() {
  const char *day = nl_langinfo(ABDAY_1 + kept.weekday);
  const char *month = nl_langinfo(ABMON_1 + kept.month);
  return std::strncmp(kept.text.data(), day, kNameBytes) == 0 &&
         std::strncmp(kept.text.data() + kMonthOffset, month, kNameBytes) == 0;
}

void keep_zone(const char *zone) {
  const std::string_view text = zorvcrt::view_of(zone);
  kept.has_zone = zone != nullptr;
  kept.reusable = text.size() < kKeptZone;
  zorvcrt::copy_text(kept.zone.data(), kKeptZone, text);
}

// As ctime() does it, but for the area: the zone is read from TZ or the zone file first.
void render(std::time_t now, const char *zone) {
  std::tm local{};
  std::array<char, kTimeTextRoom> whole{};
  tzset();
  // A time whose year has no text is left out; there is none before the year 10000.
  const bool done = localtime_r(&now, &local) != nullptr && asctime_r(&local, whole.data()) != nullptr;
  kept.size = done ? ::strnlen(whole.data(), kShownBytes) : 0;
  std::memcpy(kept.text.data(), whole.data(), kept.size);
  if (done) kept.text[kept.size++] = ' ';
  kept.second = now;
  kept.weekday = local.tm_wday;
  kept.month = local.tm_mon;
  keep_zone(zone);
}

}  // namespace

std::string_view zorvcrt::current_time_text() {
  const std::time_t now = std::time(nullptr);
  const char *zone = std::getenv("TZ");
  if (!kept.reusable || kept.second != now || !is_same_zone(zone) || !has_same_names()) render(now, zone);
  return {kept.text.data(), kept.size};
}
