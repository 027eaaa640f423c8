// Written zones and the shift that each of them stands for.
#pragma once

#include <cstdint>
#include <ctime>
#include <string_view>

namespace zorvcrt {

/// Shifts @p record by a zone text, which a null character ends too, as ZfxTimestampToUTC() describes. False,
/// and nothing changed, when the text is no zone.
bool shift_by_zone(tm &record, std::string_view zone);

/// Shifts @p record by the zone whose text is @p sign, '+' or '-', and the digits of @p number.
void shift_by_numeric_zone(tm &record, char sign, int32_t number);

}  // namespace zorvcrt
