// SPDX-License-Identifier: MIT
#include "util/page_buffer.h"

#include <algorithm>
#include <sys/mman.h>

enum : size_t { CAPACITY_FIRST = size_t{512} << 10, HUGE_PAGE = size_t{2} << 20 };

// Address space of `size` bytes at a multiple of HUGE_PAGE; MAP_FAILED when there is none.
static void *reserve_aligned(size_t size)
{
    void *wide = mmap(nullptr, size + HUGE_PAGE, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (wide == MAP_FAILED)
        return wide;
    auto *begin = static_cast<uint8_t *>(wide);
    const size_t before = -reinterpret_cast<uintptr_t>(begin) & (HUGE_PAGE - 1);
    if (before > 0)
        munmap(begin, before);
    munmap(begin + before + size, HUGE_PAGE - before);
    return begin + before;
}

// Pages that moved within huge pages stay so only when both addresses are multiples of their size.
static void *move_aligned(void *from, size_t size, size_t new_size)
{
    void *to = reserve_aligned(new_size);
    if (to == MAP_FAILED)
        return to;
    void *moved = mremap(from, size, new_size, MREMAP_MAYMOVE | MREMAP_FIXED, to);
    if (moved == MAP_FAILED)
        munmap(to, new_size);
    else
        madvise(moved, new_size, MADV_HUGEPAGE);
    return moved;
}

bool PageBuffer::grow(size_t count)
{
    if (count > PTRDIFF_MAX - size_)
        return false;
    size_t capacity = std::max(2 * capacity_, size_t{CAPACITY_FIRST});
    while (capacity - size_ < count)
        capacity *= 2;
    void *block = nullptr;
    if (capacity_ == 0)
        block = mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    else if (capacity < HUGE_PAGE)
        block = mremap(data_, capacity_, capacity, MREMAP_MAYMOVE);
    else
        block = move_aligned(data_, capacity_, capacity);
    if (block == MAP_FAILED)
        return false;
    data_ = static_cast<uint8_t *>(block);
    capacity_ = capacity;
    return true;
}

void PageBuffer::clear()
{
    if (capacity_ > 0)
        munmap(data_, capacity_);
    data_ = nullptr;
    size_ = capacity_ = 0;
}
