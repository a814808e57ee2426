#include "agent/bundle/ElfFile.h"

#include <link.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>

namespace agent {
namespace {

constexpr std::size_t kLongestText = 100;

// Reads values of trivial types at offsets. Every read may fail: the file is input from outside.
class ElfReader {
 public:
  explicit ElfReader(const std::string& file) : stream_(file, std::ios::binary) {
    stream_.seekg(0, std::ios::end);
    size_ = stream_ ? static_cast<std::uint64_t>(stream_.tellg()) : 0;
  }

  std::uint64_t size() const { return size_; }

  // The header of an ELF file of this machine's word size.
  std::optional<ElfW(Ehdr)> header() {
    constexpr unsigned char kClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    const auto header = read<ElfW(Ehdr)>(0);
    const bool isElf = header && std::memcmp(header->e_ident, ELFMAG, SELFMAG) == 0 &&
                       header->e_ident[EI_CLASS] == kClass;
    return isElf ? header : std::nullopt;
  }

  std::optional<ElfW(Phdr)> segment(const ElfW(Ehdr) & header, std::uint64_t index) {
    if (header.e_phentsize != sizeof(ElfW(Phdr))) {
      return std::nullopt;
    }
    return read<ElfW(Phdr)>(header.e_phoff + index * sizeof(ElfW(Phdr)));
  }

  std::optional<ElfW(Shdr)> section(const ElfW(Ehdr) & header, std::uint64_t index) {
    if (header.e_shentsize != sizeof(ElfW(Shdr))) {
      return std::nullopt;
    }
    return read<ElfW(Shdr)>(header.e_shoff + index * sizeof(ElfW(Shdr)));
  }

  // The bytes at the offset up to the first NUL, the limit, or the end of the file.
  std::string text(std::uint64_t offset, std::uint64_t limit) {
    std::string result(static_cast<std::size_t>(std::min<std::uint64_t>(limit, kLongestText)),
                       '\0');
    stream_.clear();
    stream_.seekg(static_cast<std::streamoff>(std::min(offset, size_)));
    stream_.read(result.data(), static_cast<std::streamsize>(result.size()));
    result.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream_.gcount(), 0)));
    return result.substr(0, result.find('\0'));
  }

  // Whether the file ends before the end of the range.
  bool endsBefore(std::uint64_t offset, std::uint64_t length) const {
    return offset > size_ || length > size_ - offset;
  }

  template <typename Value>
  std::optional<Value> read(std::uint64_t offset) {
    Value value{};
    if (endsBefore(offset, sizeof value)) {
      return std::nullopt;
    }
    stream_.clear();
    stream_.seekg(static_cast<std::streamoff>(offset));
    stream_.read(reinterpret_cast<char*>(&value), sizeof value);
    return stream_ ? std::optional<Value>(value) : std::nullopt;
  }

 private:
  std::ifstream stream_;
  std::uint64_t size_ = 0;
};

// Whether the symbol table in the section `table` defines the symbol.
bool defines(ElfReader& reader, const ElfW(Shdr) & table, const ElfW(Shdr) & names,
             const std::string& symbol) {
  const std::uint64_t count =
      std::min<std::uint64_t>(table.sh_size, reader.size()) / sizeof(ElfW(Sym));
  for (std::uint64_t i = 0; i < count; ++i) {
    const auto entry = reader.read<ElfW(Sym)>(table.sh_offset + i * sizeof(ElfW(Sym)));
    if (entry && entry->st_shndx != SHN_UNDEF &&
        reader.text(names.sh_offset + entry->st_name, kLongestText) == symbol) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool isTruncatedElf(const std::string& file) {
  ElfReader reader(file);
  const auto header = reader.header();
  if (!header) {
    return false;
  }
  if (reader.endsBefore(header->e_shoff, std::uint64_t{header->e_shentsize} * header->e_shnum)) {
    return true;
  }
  for (std::uint64_t i = 0; i < header->e_phnum; ++i) {
    const auto segment = reader.segment(*header, i);
    if (segment && segment->p_type == PT_LOAD &&
        reader.endsBefore(segment->p_offset, segment->p_filesz)) {
      return true;
    }
  }
  return false;
}

std::string elfSectionText(const std::string& file, const std::string& section) {
  ElfReader reader(file);
  const auto header = reader.header();
  const auto names = header ? reader.section(*header, header->e_shstrndx) : std::nullopt;
  if (!names) {
    return "";
  }
  for (std::uint64_t i = 0; i < header->e_shnum; ++i) {
    const auto found = reader.section(*header, i);
    if (found && reader.text(names->sh_offset + found->sh_name, kLongestText) == section) {
      return reader.text(found->sh_offset, found->sh_size);
    }
  }
  return "";
}

bool isElf(const std::string& file) {
  return ElfReader(file).header().has_value();
}

bool definesSymbol(const std::string& file, const std::string& symbol) {
  ElfReader reader(file);
  const auto header = reader.header();
  for (std::uint64_t i = 0; header && i < header->e_shnum; ++i) {
    const auto table = reader.section(*header, i);
    if (table && table->sh_type == SHT_DYNSYM) {
      const auto names = reader.section(*header, table->sh_link);
      return names && defines(reader, *table, *names, symbol);
    }
  }
  return false;
}

}  // namespace agent
