// The time text is made once per second and thread and kept. Made anew for every line it costs more than the
// line's write: without TZ, tzset() asks the file system each time whether the zone file has been replaced.
#include "time_text.hpp"

#include <array>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "fixed_text.hpp"

namespace {

constexpr std::size_t kShownBytes = 19;
constexpr std::size_t kKeptZone = 64;
constexpr std::size_t kTimeTextRoom = 64;  // asctime_r() asks for 26

// The text with all that it depends on. A zone text too long to be kept leaves the text not reusable.
struct KeptTime {
  std::time_t second;
  bool reusable;
  bool has_zone;
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
  bool done = localtime_r(&now, &local) != nullptr;
  local.tm_year = 0;  // not shown; so a clock beyond the year 9999, which asctime_r() refuses, has a text too
  done = done && asctime_r(&local, whole.data()) != nullptr;
  kept.size = done ? ::strnlen(whole.data(), kShownBytes) : 0;
  std::memcpy(kept.text.data(), whole.data(), kept.size);
  if (done) kept.text[kept.size++] = ' ';
  kept.second = now;
  keep_zone(zone);
}

}  // namespace

std::string_view zorvcrt::current_time_text() {
  const std::time_t now = std::time(nullptr);
  const char *zone = std::getenv("TZ");
  if (!kept.reusable || kept.second != now || !is_same_zone(zone)) render(now, zone);
  return {kept.text.data(), kept.size};
}
