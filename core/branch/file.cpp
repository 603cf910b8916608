#include "core/branch/file.h"

#include <algorithm>
#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace orv::core {
namespace {

struct File {
    int number;
    explicit File(const char* path) : number(open(path, O_RDONLY | O_CLOEXEC)) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File()
    {
        if (number >= 0) close(number);
    }
    template <class T> bool read(T& record, u64 at) const
    {
        return pread(number, &record, sizeof record, static_cast<off_t>(at)) == sizeof record;
    }
};

// The end of what lies there; sizes of a damaged header may be anything.
u64 end_of(u64 begin, u64 size)
{
    u64 end;
    return __builtin_add_overflow(begin, size, &end) ? std::numeric_limits<u64>::max() : end;
}

bool is_elf64(const Elf64_Ehdr& head)
{
    return std::memcmp(head.e_ident, ELFMAG, SELFMAG) == 0 && head.e_ident[EI_CLASS] == ELFCLASS64 &&
           head.e_phentsize == sizeof(Elf64_Phdr);
}

} // namespace

FileSize look_at_file(const char* path)
{
    const File file(path);
    struct stat status;
    Elf64_Ehdr head;
    if (file.number < 0 || fstat(file.number, &status) != 0 || !file.read(head, 0) || !is_elf64(head)) return {};

    const u64 there = static_cast<u64>(status.st_size);
    u64 told = std::max(end_of(head.e_phoff, u64{head.e_phnum} * sizeof(Elf64_Phdr)),
                        end_of(head.e_shoff, u64{head.e_shnum} * head.e_shentsize)); // most linkers put the latter last
    Elf64_Phdr part;
    for (unsigned i = 0; i < head.e_phnum && file.read(part, head.e_phoff + i * sizeof part); ++i)
        told = std::max(told, end_of(part.p_offset, part.p_filesz));
    return {there, told};
}

} // namespace orv::core
