// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QtGlobal>

namespace Tarnvel::Benchmarks {

/*!
 * \brief What the process has taken from the heap so far, in all threads and libraries.
 *
 * A program that asks for it has malloc() and its kin replaced by functions that count.
 */
struct Heap
{
    /*! How often memory was taken. */
    qint64 allocations;
    /*! What is in use, as the sizes of the blocks handed out. */
    qint64 bytes;
};

/*! \brief The heap as it is now. */
Heap readHeap();

} // namespace Tarnvel::Benchmarks
