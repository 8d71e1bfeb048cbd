// Which files a run reads and writes, and that none of them is overwritten by mistake.
#pragma once

#include <vector>

#include "byte_source.h"
#include "masker.h"
#include "options.h"
#include "report.h"

namespace tool {

// Throws ToolError when a file that is read would be overwritten, or one file be written twice, by
// whatever names they go. The output may take the place of the input, unless the input has further
// names, under which the clear text would stay.
void checkFiles(const Options& options, const std::vector<ColumnPlan>& plan,
                const FileSource& input);

// The same once the report has been created. Removes the report when this object has made it.
void checkReport(const Options& options, const std::vector<ColumnPlan>& plan,
                 const FileSource& input, const Report& report);

}  // namespace tool
