// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QtGlobal>

namespace Tarnvel::Benchmarks {

/*!
 * \brief The heap use of this process, in all threads and libraries.
 *
 * In a program that links heap.cpp, counting functions replace malloc() and the related functions.
 */
struct Heap
{
    /*! How many blocks have been allocated so far. */
    qint64 allocations;
    /*! The total size of the blocks in use. */
    qint64 bytes;
};

/*! \brief The present heap use. */
Heap readHeap();

} // namespace Tarnvel::Benchmarks
