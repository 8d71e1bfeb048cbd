// Level 9: golden vectors, which show that a new version of a provider masks as the old one did.
#include <fstream>
#include <stdexcept>

#include "checks.h"

namespace kit {

namespace {

void vectorsRecorded(const Context& context) {
    Trial trial(context);
    const std::vector<Record> recorded = runAgain(context.settings, "results", {});
    if (recorded.size() != trial.corpus.size()) return finding("the recording ended early");
    for (size_t i = 0; i < recorded.size(); ++i) {
        const Record own = {"value", trial.corpus[i].kind, trial.corpus[i].text,
                            asText(trial.mask(trial.corpus[i]))};
        if (fromLine(toLine(own)) == recorded[i]) continue;
        trial.findings.add("the recorded result is not repeated, " + with(trial.corpus[i]));
    }
}

// Lines of a recording: rule, kind of value, value, outcome. Others are comments.
void vectorsReplayed(const Context& context) {
    const Settings& settings = context.settings;
    std::ifstream file(settings.replay, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + settings.replay);
    Trial trial(context);
    size_t count = 0;
    std::string line;
    for (size_t number = 1; std::getline(file, line); ++number) {
        const Record record = fromLine(line);
        if (line.starts_with('#') || record.size() != 4 || record[0] != settings.rule) continue;
        ++count;
        doing("masking the value in line ", std::to_string(number).c_str());
        if (asText(trial.session.mask(record[2])) == record[3]) continue;
        trial.findings.add("the result is not the recorded one, with the value in line " +
                           std::to_string(number) + " of the vectors");
    }
    figure("vectors replayed", std::to_string(count));
    if (count == 0) finding("the vectors have none for this rule");
}

}  // namespace

std::vector<NamedTest> vectorTests() {
    return {{"vectors-recorded", vectorsRecorded}, {"vectors-replayed", vectorsReplayed}};
}

}  // namespace kit
