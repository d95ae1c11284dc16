// Memory of exactly as many bytes as a test asks for. A step beyond the last one ends the
// test: behind it is a page that nobody may touch or, under AddressSanitizer, memory that
// the sanitizer guards, in front too.
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#if defined __SANITIZE_ADDRESS__
#define EXACT_MEMORY_IS_GUARDED 1
#elif defined __has_feature
#if __has_feature(address_sanitizer)
#define EXACT_MEMORY_IS_GUARDED 1
#endif
#endif

class ExactMemory
{
  public:
    // Zeros. An alignment is for sizes that are no multiple of it: so many bytes less one may
    // then lie in front of the page.
    explicit ExactMemory(size_t size, size_t alignment = 1) : memory(reserve(size, alignment)), count(size)
    {
        std::fill_n(data(), size, '\0');
    }
    // A copy.
    ExactMemory(const void* bytes, size_t size, size_t alignment = 1) : memory(reserve(size, alignment)), count(size)
    {
        std::copy_n(static_cast<const char*>(bytes), size, data());
    }

    char* data() const { return memory.get(); }
    size_t size() const { return count; }

  private:
#ifdef EXACT_MEMORY_IS_GUARDED
    struct Release {
        void operator()(char* bytes) const { operator delete(bytes); }
    };
    static std::unique_ptr<char, Release> reserve(size_t size, size_t)
    {
        return std::unique_ptr<char, Release>(static_cast<char*>(operator new(size)));
    }
#else
    struct Release {
        char* pages;
        size_t size;
        void operator()(char*) const { munmap(pages, size); }
    };
    static std::unique_ptr<char, Release> reserve(size_t size, size_t alignment)
    {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t room = (size + page - 1) / page * page;
        void* pages = mmap(nullptr, room + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED || mprotect(static_cast<char*>(pages) + room, page, PROT_NONE) != 0)
            throw std::bad_alloc();
        char* first = static_cast<char*>(pages) + (room - size) / alignment * alignment;
        return {first, Release{static_cast<char*>(pages), room + page}};
    }
#endif

    std::unique_ptr<char, Release> memory;
    size_t count;
};

// A text as C reads it, up to its first NUL.
inline ExactMemory exact_text(const std::string& text) { return {text.c_str(), strlen(text.c_str()) + 1}; }
