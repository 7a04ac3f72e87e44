// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QProcess>

namespace Tarnvel::Testing {

/*! \brief A process whose child prepares itself before it becomes the program. */
class ChildProcess : public QProcess
{
public:
    ChildProcess()
    {
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
        setChildProcessModifier([this] { prepareChild(); });
#endif
    }

protected:
    /*! \brief Runs in the child, between fork and exec. */
    virtual void prepareChild() = 0;

private:
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    void setupChildProcess() final
    {
        prepareChild();
    }
#endif
};

} // namespace Tarnvel::Testing
