// The descriptors between korv-provider and its helper.
#pragma once

namespace kit {

// Standard output, standard error, the report of records, and a page that says what the helper is
// doing: it outlives a crash.
inline constexpr int kFirstChannel = 1;
inline constexpr int kChannelCount = 4;
inline constexpr int kReportChannel = 3;
inline constexpr int kDoingChannel = 4;
inline constexpr unsigned kDoingSize = 4096;

}  // namespace kit
