#include "agent/formats/NetworkReader.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <system_error>

#include "agent/base/Text.h"
#include "agent/formats/GraphmlNetwork.h"
#include "agent/formats/JsonNetwork.h"
#include "agent/network/NetworkChecks.h"

namespace agent {
namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
constexpr std::string_view kBlanks = " \t\r\n";

[[noreturn]] void throwFileRefusal(const std::string& reason) {
  throw Refusal{"file", reason};
}

[[noreturn]] void throwFileRefusal(int systemError) {
  throwFileRefusal(std::generic_category().message(systemError));
}

// Devices and pipes may never end, so only files are read.
void requireRegularFile(const std::filesystem::path& file) {
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (std::filesystem::is_directory(status)) {
    throwFileRefusal(EISDIR);
  }
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    throwFileRefusal("is not a regular file");
  }
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string contentOf(const std::filesystem::path& file) {
  requireRegularFile(file);
  const std::unique_ptr<std::FILE, CloseFile> stream(std::fopen(file.c_str(), "rbe"));
  if (!stream) {
    throwFileRefusal(errno);
  }
  std::string content;
  char block[65536];
  while (const std::size_t count = std::fread(block, 1, sizeof block, stream.get())) {
    content.append(block, count);
  }
  if (std::ferror(stream.get()) != 0) {
    throwFileRefusal(errno);
  }
  return content;
}

void requireText(std::string_view content) {
  if (const auto invalid = findInvalidUtf8(content)) {
    throw Refusal{linePlace(content, *invalid), "is not UTF-8 here"};
  }
  if (const std::size_t nul = content.find('\0'); nul != std::string_view::npos) {
    throw Refusal{linePlace(content, nul), "holds a NUL character"};
  }
}

using Check = void (*)(const Network&);

Network parse(std::string_view content, const std::string& baseName, Check check,
              const Cancellation& cancellation) {
  if (content.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
    content.remove_prefix(kByteOrderMark.size());
  }
  const std::size_t first = content.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    throwFileRefusal("is empty");
  }
  requireText(content);
  if (content[first] == '<') {
    return readGraphmlNetwork(content, baseName, cancellation);
  }
  Network network = readJsonNetwork(content, cancellation);
  check(network);
  return network;
}

// Refusals leave as what is wrong with the file of a name.
template <typename Read>
Network readAs(const std::string& name, Read read) {
  try {
    return read();
  } catch (const Refusal& refusal) {
    throw NetworkError(name, refusal.place, refusal.reason);
  } catch (const std::bad_alloc&) {
    throw NetworkError(name, "file", "is too large for the memory there is");
  }
}

}  // namespace

Network readNetworkFile(const std::filesystem::path& file) {
  return readAs(file.string(), [&] {
    return parse(contentOf(file), file.stem().string(), checkNetwork, Cancellation::none());
  });
}

Network readNetwork(const std::string& name, std::string_view content,
                    const Cancellation& cancellation) {
  return readAs(name, [&] {
    return parse(content, std::filesystem::path(name).stem().string(), checkPart, cancellation);
  });
}

}  // namespace agent
