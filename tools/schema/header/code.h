// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::Schema {

/*! \brief C++ that is written line by line. */
class Code
{
public:
    QString text() const
    {
        return m_text;
    }

    /*! \brief Adds indented lines. */
    void lines(const QString &text);

    /*! \brief Adds an indented line, with \a texts for %1, %2 and so on. */
    template<typename... Texts>
    void line(const char *format, const Texts &...texts)
    {
        addLine(filled(format, texts...));
    }

    /*! \brief Adds an empty line, but neither a second one nor at the beginning of a block. */
    void blank();

    /*! \brief Adds an empty line and a Doxygen comment with the \a paragraphs that are not empty.
     */
    void comment(const QStringList &paragraphs);

    /*! \brief Adds an empty line and a comment of one line. */
    template<typename... Texts>
    void brief(const char *format, const Texts &...texts)
    {
        comment({QStringLiteral("\\brief ") + filled(format, texts...)});
    }

    /*! \brief Adds a line and an opening brace. */
    template<typename... Texts>
    void open(const char *format, const Texts &...texts)
    {
        addLine(filled(format, texts...));
        openBlock();
    }

    /*! \brief Adds the closing brace. */
    void close(const char *brace = "}");

    /*! \brief Adds an empty line, unless a block begins here, and "public:" or "private:". */
    void label(const char *access);

private:
    template<typename... Texts>
    static QString filled(const char *format, const Texts &...texts)
    {
        if constexpr (sizeof...(texts) > 0)
            return QString::fromLatin1(format).arg(texts...);
        return QString::fromLatin1(format);
    }

    void addLine(const QString &text);
    void openBlock();

    QString m_text;
    int m_level = 0;
};

} // namespace Tarnvel::Schema
