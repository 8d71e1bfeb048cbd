// Reading of secrets files.
#include "secrets/secrets.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "mask_error.h"
#include "secrets/secret_text.h"

namespace secrets {

namespace {

constexpr size_t kMostBytes = size_t{1} << 20;
constexpr std::string_view kBlanks = " \t\r";

using mask::MaskError;

[[noreturn]] void fail(const std::string& file, const std::string& message) {
    throw MaskError(KORV_MASK_BAD_RULES, file + ": " + message);
}

[[noreturn]] void failSystem(const std::string& file, const char* what) {
    fail(file, std::string(what) + std::generic_category().message(errno));
}

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const { return number_; }

  private:
    int number_;
};

// Only the user and root may have written or read the secrets.
void checkPrivate(const std::string& file, const struct stat& status) {
    if (!S_ISREG(status.st_mode)) fail(file, "secrets are read from a regular file only");
    if (status.st_uid != ::geteuid() && status.st_uid != 0) {
        fail(file, "the file with the secrets belongs to another user");
    }
    if ((status.st_mode & 077) != 0) {
        fail(file, "other users have access to the secrets; run chmod 600 on the file");
    }
}

std::string_view withoutBlanks(std::string_view text) {
    const size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

}  // namespace

void Secrets::insert(const std::string& name, std::span<const uint8_t> secret) {
    uint8_t* const copy = pages_.allocate(secret.size());
    std::copy(secret.begin(), secret.end(), copy);
    secrets_.emplace(name, std::span<const uint8_t>(copy, secret.size()));
}

void Secrets::add(const std::string& name, std::span<const uint8_t> secret) {
    if (secrets_.contains(name)) {
        throw MaskError(KORV_MASK_BAD_RULES, "the secret " + name + " is given twice");
    }
    insert(name, secret);
}

void Secrets::addLine(const std::string& file, uint32_t number, std::string_view line) {
    const std::string place = file + ":" + std::to_string(number);
    const std::string_view content = withoutBlanks(line);
    if (content.empty() || content[0] == '#') return;
    const size_t separator = content.find('=');
    const std::string_view name = withoutBlanks(content.substr(0, separator));
    // The line may hold a secret in the place of the name, so it is not shown.
    if (separator == std::string_view::npos || !isSecretName(name)) {
        fail(place,
             "a line has the form name = value; a name has lower-case letters, digits and "
             "underscores, a letter first");
    }
    const std::string known(name);
    if (secrets_.contains(known)) fail(place, "the secret " + known + " is given twice");
    uint8_t bytes[kLongestSecret];
    const size_t length = decodeSecret(withoutBlanks(content.substr(separator + 1)), bytes);
    if (length == 0) {
        fail(place, "the secret " + known +
                        " must be 16 to 64 bytes, in hexadecimal digits or padded base64");
    }
    insert(known, {bytes, length});
    wipe(bytes, sizeof bytes);
}

void Secrets::read(const std::string& file) {
    const Descriptor input(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (input.number() < 0) failSystem(file, "cannot open the secrets: ");
    struct stat status;
    if (::fstat(input.number(), &status) != 0) failSystem(file, "cannot read the secrets: ");
    checkPrivate(file, status);
    if (static_cast<uint64_t>(status.st_size) > kMostBytes) fail(file, "larger than 1 MiB");

    // One byte more shows that the file grows.
    SecretPages memory;
    const size_t room = static_cast<size_t>(status.st_size) + 1;
    char* const text = reinterpret_cast<char*>(memory.allocate(room));
    size_t size = 0;
    while (size < room) {
        const ssize_t count = ::read(input.number(), text + size, room - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) failSystem(file, "cannot read the secrets: ");
        if (count == 0) break;
        size += static_cast<size_t>(count);
    }
    if (size == room) fail(file, "the file with the secrets changes while it is read");

    std::string_view left(text, size);
    for (uint32_t number = 1; !left.empty(); ++number) {
        const size_t end = std::min(left.find('\n'), left.size());
        addLine(file, number, left.substr(0, end));
        left.remove_prefix(std::min(end + 1, left.size()));
    }
}

std::span<const uint8_t> Secrets::find(const std::string& name) const {
    const auto found = secrets_.find(name);
    return found == secrets_.end() ? std::span<const uint8_t>() : found->second;
}

}  // namespace secrets
