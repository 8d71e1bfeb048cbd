// The secrets of a handle, by name.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>

#include "secrets/secret_pages.h"

namespace secrets {

class Secrets {
  public:
    // Both throw mask::MaskError, with names of secrets only, and std::bad_alloc.
    void add(const std::string& name, std::span<const uint8_t> secret);
    // Reads a file of lines `name = value`.
    void read(const std::string& file);

    // The secret; empty when there is no secret of this name.
    std::span<const uint8_t> find(const std::string& name) const;

  private:
    void addLine(const std::string& file, uint32_t number, std::string_view line);
    void insert(const std::string& name, std::span<const uint8_t> secret);

    SecretPages pages_;
    std::map<std::string, std::span<const uint8_t>> secrets_;
};

}  // namespace secrets
