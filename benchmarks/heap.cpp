// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "heap.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <malloc.h>

namespace {

std::atomic<qint64> allocations {0};
std::atomic<qint64> bytes {0};

void *recordAllocation(void *block)
{
    if (block) {
        ++allocations;
        bytes += static_cast<qint64>(malloc_usable_size(block));
    }
    return block;
}

void recordRelease(void *block)
{
    if (block)
        bytes -= static_cast<qint64>(malloc_usable_size(block));
}

} // namespace

// Under these names, the C library keeps its own functions for programs that replace the others.
extern "C" {

void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void *block);

void *malloc(std::size_t size)
{
    return recordAllocation(__libc_malloc(size));
}

void *calloc(std::size_t count, std::size_t size)
{
    return recordAllocation(__libc_calloc(count, size));
}

void *realloc(void *block, std::size_t size)
{
    recordRelease(block);
    return recordAllocation(__libc_realloc(block, size));
}

void *aligned_alloc(std::size_t alignment, std::size_t size)
{
    return recordAllocation(__libc_memalign(alignment, size));
}

int posix_memalign(void **block, std::size_t alignment, std::size_t size)
{
    *block = aligned_alloc(alignment, size);
    return *block ? 0 : ENOMEM;
}

void free(void *block)
{
    recordRelease(block);
    __libc_free(block);
}

} // extern "C"

namespace Tarnvel::Benchmarks {

Heap readHeap()
{
    return {allocations, bytes};
}

} // namespace Tarnvel::Benchmarks
