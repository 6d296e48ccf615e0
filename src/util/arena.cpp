// SPDX-License-Identifier: MIT
#include "util/arena.h"

#include <algorithm>
#include <cstdlib>
#include <sys/mman.h>

// The first chunk is small, since most runs need little. Each further one is twice as large, up to
// CHUNK_MAX. From HUGE_PAGE on chunks are made of huge pages where the system has them: a list of
// thousands of devices then costs few page faults, which are what reading it mostly costs
// otherwise.
//
// Where faults are looked for, every piece is a chunk of its own.
#ifdef ZOV_SEPARATE_ALLOCATIONS
enum : size_t { CHUNK_FIRST = 1, CHUNK_MAX = 1 };
#else
enum : size_t { CHUNK_FIRST = size_t{32} << 10, CHUNK_MAX = size_t{4} << 20 };
#endif
enum : size_t { HUGE_PAGE = size_t{2} << 20 };

struct alignas(std::max_align_t) Arena::Chunk {
    Chunk *older;

    char *memory() { return reinterpret_cast<char *>(this + 1); }
};

static void *allocate_huge_pages(size_t size)
{
    void *chunk = aligned_alloc(HUGE_PAGE, size);
    if (chunk != nullptr)
        madvise(chunk, size, MADV_HUGEPAGE);
    return chunk;
}

// A new chunk's memory has the strictest alignment.
void *Arena::allocate_in_new_chunk(size_t size)
{
    const size_t grown = std::clamp<size_t>(2 * chunk_size_, CHUNK_FIRST, CHUNK_MAX);
    const bool alone = size > grown - std::min(grown, sizeof(Chunk));
    const size_t total = alone ? sizeof(Chunk) + size : grown;
    if (total < size)
        return nullptr;
    const bool huge = !alone && total >= HUGE_PAGE;
    void *room = huge ? allocate_huge_pages(total) : malloc(total);
    if (room == nullptr)
        return nullptr;
    auto *chunk = static_cast<Chunk *>(room);
    chunk->older = chunks_;
    chunks_ = chunk;
    if (!alone) {
        chunk_size_ = grown;
        next_ = chunk->memory() + size;
        left_ = total - sizeof(Chunk) - size;
    }
    return chunk->memory();
}

void Arena::clear()
{
    while (chunks_ != nullptr) {
        Chunk *older = chunks_->older;
        free(chunks_);
        chunks_ = older;
    }
    next_ = nullptr;
    left_ = chunk_size_ = 0;
}
