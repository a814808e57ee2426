#include "agent/formats/NetworkReader.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "agent/base/FailureCodes.h"
#include "agent/base/PrintableText.h"
#include "agent/base/TextChecks.h"
#include "agent/formats/GraphmlNetwork.h"
#include "agent/formats/JsonNetwork.h"
#include "agent/formats/ParseError.h"
#include "agent/network/NetworkChecks.h"

namespace agent {
namespace {

// Most of the memory that is reserved before a file is read: a larger file may have holes.
constexpr std::uintmax_t kMostReserved = std::uintmax_t{256} << 20;

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
constexpr std::string_view kBlanks = " \t\r\n";

Outcome unreadable(const std::string& reason) {
  return invalidInput("file", reason);
}

Outcome unreadable(int systemError) {
  return unreadable(std::generic_category().message(systemError));
}

// A device or a pipe may never end, so only regular files are read.
Outcome checkRegularFile(const std::filesystem::path& file) {
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (std::filesystem::is_directory(status)) {
    return unreadable(EISDIR);
  }
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    return unreadable("is not a regular file");
  }
  return {};
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

Result<std::string> contentOf(const std::filesystem::path& file) {
  if (Outcome checked = checkRegularFile(file); !checked.ok()) {
    return checked;
  }
  const std::unique_ptr<std::FILE, CloseFile> stream(std::fopen(file.c_str(), "rbe"));
  if (!stream) {
    return unreadable(errno);
  }
  std::string content;
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  content.reserve(error ? 0 : static_cast<std::size_t>(std::min(size, kMostReserved)));
  char block[65536];
  while (const std::size_t count = std::fread(block, 1, sizeof block, stream.get())) {
    content.append(block, count);
  }
  if (std::ferror(stream.get()) != 0) {
    return unreadable(errno);
  }
  return Result<std::string>(std::move(content));
}

Outcome checkText(std::string_view content) {
  if (const auto invalid = findInvalidUtf8(content)) {
    return invalidInput(linePlace(content, *invalid), "is not UTF-8 here");
  }
  if (const std::size_t nul = content.find('\0'); nul != std::string_view::npos) {
    return invalidInput(linePlace(content, nul), "contains a NUL character");
  }
  return {};
}

using Check = Outcome (*)(const Network&);

// Throws ParseError and Cancelled.
Result<PlacedNetwork> parse(std::string_view content, const std::string& baseName, Check check,
                            std::optional<GraphmlNumbering> numbering,
                            const Cancellation& cancellation) {
  if (content.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
    content.remove_prefix(kByteOrderMark.size());
  }
  const std::size_t first = content.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return unreadable("is empty");
  }
  if (Outcome checked = checkText(content); !checked.ok()) {
    return checked;
  }
  if (content[first] == '<') {
    return readGraphmlNetwork(content, baseName, numbering, cancellation);
  }
  if (numbering) {
    return unreadable("is not GraphML, the only format whose elements can be numbered");
  }
  Network network = readJsonNetwork(content, cancellation);
  if (Outcome checked = check(network); !checked.ok()) {
    return checked;
  }
  return PlacedNetwork{std::move(network), {}};
}

Outcome failureOf(const std::string& name, const std::string& reason) {
  constexpr std::size_t kMostNameBytes = 4096;
  return {kInvalidInput, printable(name, kMostNameBytes) + ": " + reason};
}

// Runs a reader and puts the name of the file before the reason of a failure.
template <typename Read>
Result<PlacedNetwork> readAs(const std::string& name, Read read) {
  try {
    Result<PlacedNetwork> network = read();
    if (network.ok()) {
      return network;
    }
    return failureOf(name, network.outcome().reason);
  } catch (const ParseError& failure) {
    return failureOf(name, failure.what());
  } catch (const std::bad_alloc&) {
    return failureOf(name, "file: is too large for the available memory");
  } catch (const Cancelled& cancelled) {
    return Outcome{kInternalError, cancelled.what()};
  }
}

}  // namespace

Result<Network> readNetworkFile(const std::filesystem::path& file) {
  Result<PlacedNetwork> read = readAs(file.string(), [&]() -> Result<PlacedNetwork> {
    Result<std::string> content = contentOf(file);
    if (!content.ok()) {
      return content.outcome();
    }
    return parse(content.value(), file.stem().string(), checkNetwork, std::nullopt,
                 Cancellation::none());
  });
  if (!read.ok()) {
    return read.outcome();
  }
  return std::move(read.value().network);
}

Result<PlacedNetwork> readNetwork(const std::string& name, std::string_view content,
                                  std::optional<GraphmlNumbering> numbering,
                                  const Cancellation& cancellation) {
  return readAs(name, [&] {
    return parse(content, std::filesystem::path(name).stem().string(), checkPart, numbering,
                 cancellation);
  });
}

}  // namespace agent
