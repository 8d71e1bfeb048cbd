// Findings, values in words, and runs of the helper by itself.
#include "checks.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include "helper_channel.h"
#include "mask/text/utf8_text.h"

namespace kit {

namespace {

constexpr size_t kMostReport = 16 << 20;

std::string pointerText(const char* text) {
    return text == nullptr ? "NULL" : text;
}

int makeMemory() {
    const int descriptor = ::memfd_create("korv-provider-run", MFD_CLOEXEC);
    if (descriptor < 0) throw std::runtime_error("no memory for another process");
    return descriptor;
}

std::string readAll(int descriptor) {
    struct stat status = {};
    ::fstat(descriptor, &status);
    std::string text(std::min(static_cast<size_t>(status.st_size), kMostReport), '\0');
    const ssize_t count = ::pread(descriptor, text.data(), text.size(), 0);
    text.resize(count < 0 ? 0 : static_cast<size_t>(count));
    return text;
}

}  // namespace

Findings::~Findings() {
    if (count_ > kMost) finding("and so in " + std::to_string(count_ - kMost) + " more cases");
}

void Findings::add(const std::string& text) {
    if (++count_ <= kMost) finding(text);
}

std::string with(const TestValue& value, const How& how) {
    std::string text = "with " + value.kind;
    if (how.form == Form::wide) text += " as wide text";
    if (how.capacity) text += " and a target of " + std::to_string(*how.capacity) + " bytes";
    return text;
}

const std::vector<TestValue>& Trial::accepted() {
    if (!knowsAccepted) acceptedValues = acceptedOf(corpus, session);
    knowsAccepted = true;
    return acceptedValues;
}

const Outcome& Trial::mask(const TestValue& value, const How& how) {
    doing(how.unmask ? "unmasking " : "masking ", value.kind.c_str());
    return session.mask(value.text, how);
}

bool isAscii(const std::string& text) {
    return text::isPlainAscii(text.data(), text.size());
}

std::string outcomeFault(const Session& session, const Outcome& outcome) {
    if (outcome.threw) return "throws an exception";
    if (!outcome.surroundingsAreIntact) return "writes outside its target";
    if (!outcome.fault.empty()) return "returns " + outcome.fault;
    return recordsFault(session.entry(), outcome.status, outcome.errors);
}

std::string tablesAsText(const PrvEntry& entry) {
    std::string text = std::to_string(entry.interfaceVersion) + " " + pointerText(entry.name);
    const auto add = [&text](auto... parts) { ((text += "\n" + parts), ...); };
    for (uint32_t i = 0; i < entry.operandCount; ++i) {
        const PrvOperand& operand = entry.operands[i];
        add("operand " + pointerText(operand.key) + " " + std::to_string(operand.code) + " " +
            std::to_string(operand.flags) + " " + std::to_string(operand.kind) + " " +
            std::to_string(operand.minimum) + " " + std::to_string(operand.maximum));
    }
    for (uint32_t i = 0; i < entry.errorCount; ++i) {
        add("error " + std::to_string(entry.errors[i].code) + " " +
            pointerText(entry.errors[i].text));
    }
    if (entry.interfaceVersion >= 2) {
        for (uint32_t i = 0; i < entry.sampleRuleCount; ++i) {
            add("sample rule " + pointerText(entry.sampleRules[i]));
        }
    }
    if (entry.interfaceVersion >= 3) {
        for (uint32_t i = 0; i < entry.methodCount; ++i) {
            add("method " + pointerText(entry.methods[i].name) + " " +
                std::to_string(entry.methods[i].flags));
        }
    }
    return text;
}

std::string asText(const Outcome& outcome) {
    if (outcome.isMasked()) return outcome.isNull ? "null" : "masked " + outcome.text;
    std::string text = outcome.fault.empty() ? "failed" : "bad";
    for (const SeenError& error : outcome.errors) text += " " + std::to_string(error.firstCode);
    return text;
}

void sendResults(const Context& context) {
    Trial trial(context);
    for (const TestValue& value : trial.corpus) {
        send({"value", value.kind, value.text, asText(trial.mask(value))});
    }
}

std::vector<Record> runAgain(const Settings& settings, const std::string& task,
                             const std::vector<std::string>& environment) {
    std::vector<std::string> words = {
        "/proc/self/exe", settings.module, "--task",        task,      "--rule",
        settings.rule,    "--values",      settings.values, "--files", settings.files};
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::vector<char*> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        variables.push_back(*variable);
    }
    // The first variable of a name counts.
    for (const std::string& variable : environment) {
        variables.insert(variables.begin(), const_cast<char*>(variable.c_str()));
    }
    variables.push_back(nullptr);
    const int report = makeMemory();
    const int page = makeMemory();
    if (::ftruncate(page, kDoingSize) != 0) throw std::runtime_error("no memory");
    const pid_t process = ::fork();
    if (process < 0) throw std::runtime_error("no other process can be started");
    if (process == 0) {
        const int from[] = {::fcntl(report, F_DUPFD, 20), ::fcntl(page, F_DUPFD, 20)};
        ::dup2(from[0], kReportChannel);
        ::dup2(from[1], kDoingChannel);
        ::execve("/proc/self/exe", arguments.data(), variables.data());
        ::_exit(127);
    }
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    std::vector<Record> records = recordsIn(readAll(report));
    ::close(report);
    ::close(page);
    if (records.empty() || records.back() != Record{"done"}) {
        throw std::runtime_error("another process with the module did not come to its end");
    }
    records.pop_back();
    return records;
}

}  // namespace kit
