// Facts about an ELF file that the dynamic linker does not report.

#ifndef AGENT_BUNDLE_ELFFILE_H
#define AGENT_BUNDLE_ELFFILE_H

#include <string>

namespace agent {

// The functions accept any file and read a few parts of the file. Thread-safety: any thread.

// Whether the file is an ELF file whose end is missing, such as a file that is still being written.
// The dynamic linker maps such a file, and a later access beyond its end raises SIGBUS. The file
// must contain all loaded segments and the section headers, which linkers write at the end of the
// file (System V ABI, "ELF Header").
bool isTruncatedElf(const std::string& file);

// The text in a section of the file, up to the first NUL and at most 100 bytes. Empty for a file
// without the section, and for a file that is not an ELF file of this machine's word size.
std::string elfSectionText(const std::string& file, const std::string& section);

// Whether the file is an ELF file of this machine's word size.
bool isElf(const std::string& file);

// Whether the dynamic symbol table of the file defines the symbol. False for a file that is not an
// ELF file. Unlike dlopen, the function runs no code of the file.
bool definesSymbol(const std::string& file, const std::string& symbol);

}  // namespace agent

#endif
