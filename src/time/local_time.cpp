// The current local time, as text and as an ODBC timestamp.
#include <ctime>

#include "korv/time.h"

namespace korv {
namespace {

// As localtime answers, but in storage of the caller's: like that, it reads the time zone again.
std::tm localNow() noexcept {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    tzset();
    localtime_r(&now, &local);
    return local;
}

}  // namespace
}  // namespace korv

char* KORVGetLocalTime(char* buffer, uint32_t capacity) {
    const std::tm local = korv::localNow();
    std::strftime(buffer, capacity, "%d/%b/%Y %H:%M:%S", &local);
    return buffer;
}

void KORVGetCurLocalTimeTS(OdbcTimestamp* timestamp, uint8_t dateOnly) {
    const std::tm local = korv::localNow();
    const auto unlessDateOnly = [dateOnly](int part) {
        return static_cast<uint16_t>(dateOnly ? 0 : part);
    };
    *timestamp = {static_cast<int16_t>(local.tm_year + 1900),
                  static_cast<uint16_t>(local.tm_mon + 1),
                  static_cast<uint16_t>(local.tm_mday),
                  unlessDateOnly(local.tm_hour),
                  unlessDateOnly(local.tm_min),
                  unlessDateOnly(local.tm_sec),
                  0};
}
