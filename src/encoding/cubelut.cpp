// SPDX-License-Identifier: MIT
#include "encoding/cubelut.h"

#include <QFile>
#include <QList>

#include <algorithm>
#include <cmath>

namespace filmwright {

namespace {

// What ffmpeg takes.
constexpr int leastSide = 2;
constexpr int mostSide = 256;

bool isNumber(const QByteArray &word)
{
    bool isRead = false;
    return std::isfinite(word.toDouble(&isRead)) && isRead;
}

bool areNumbers(const QList<QByteArray> &words, qsizetype count)
{
    return words.size() == count && std::all_of(words.cbegin(), words.cend(), isNumber);
}

bool isKeyword(const QByteArray &word)
{
    return !word.isEmpty() && ((word.front() >= 'A' && word.front() <= 'Z') || word.front() == '_');
}

/// Takes a file line by line. Each answers what is wrong with the line, or an empty string.
class CubeReader
{
public:
    QString take(const QByteArray &line)
    {
        QList<QByteArray> words = line.simplified().split(' ');
        if (words.constFirst().isEmpty() || words.constFirst().startsWith('#'))
            return {};
        if (!isKeyword(words.constFirst()))
            return takeRow(words);
        const QByteArray keyword = words.takeFirst();
        return m_rows > 0 ? QStringLiteral("\"%1\" stands behind the table's first row")
                                .arg(QString::fromUtf8(keyword))
                          : takeKeyword(keyword, words);
    }

    QString finish() const
    {
        if (m_side == 0)
            return QStringLiteral("it has no LUT_3D_SIZE");
        if (m_rows < rows())
            return QStringLiteral("it ends after %1 of %2 rows").arg(m_rows).arg(rows());
        return {};
    }

    /// The range of the input stands behind the size, as ffmpeg has it.
    QByteArray table() const
    {
        return "LUT_3D_SIZE " + QByteArray::number(m_side) + "\nDOMAIN_MIN " + m_least +
               "\nDOMAIN_MAX " + m_most + '\n' + m_table;
    }

private:
    qint64 rows() const { return qint64{m_side} * m_side * m_side; }

    QString takeKeyword(const QByteArray &keyword, const QList<QByteArray> &words)
    {
        if (keyword == "TITLE")
            return {};
        if (keyword == "LUT_3D_SIZE")
            return takeSize(words);
        if (keyword == "LUT_1D_SIZE")
            return QStringLiteral("a table in one dimension; one in three (LUT_3D_SIZE) is needed");
        if (keyword == "DOMAIN_MIN" || keyword == "DOMAIN_MAX") {
            if (!areNumbers(words, 3))
                return QStringLiteral("%1 needs three numbers").arg(QString::fromLatin1(keyword));
            (keyword == "DOMAIN_MIN" ? m_least : m_most) = words.join(' ');
            return {};
        }
        if (keyword == "LUT_3D_INPUT_RANGE") {
            if (!areNumbers(words, 2))
                return QStringLiteral("LUT_3D_INPUT_RANGE needs two numbers");
            m_least = QList<QByteArray>(3, words.constFirst()).join(' ');
            m_most = QList<QByteArray>(3, words.constLast()).join(' ');
            return {};
        }
        return QStringLiteral("\"%1\" is not known").arg(QString::fromUtf8(keyword));
    }

    QString takeSize(const QList<QByteArray> &words)
    {
        const int side = words.size() == 1 ? words.constFirst().toInt() : 0;
        if (side < leastSide || side > mostSide)
            return QStringLiteral("LUT_3D_SIZE is a number from %1 to %2")
                .arg(leastSide)
                .arg(mostSide);
        m_side = side;
        return {};
    }

    QString takeRow(const QList<QByteArray> &words)
    {
        if (m_side == 0)
            return QStringLiteral("a row stands before LUT_3D_SIZE");
        if (!areNumbers(words, 3))
            return QStringLiteral("a row is three numbers");
        if (++m_rows > rows())
            return QStringLiteral("there are more than %1 rows").arg(rows());
        m_table += words.join(' ') + '\n';
        return {};
    }

    int m_side = 0;
    qint64 m_rows = 0;
    QByteArray m_least = "0 0 0";
    QByteArray m_most = "1 1 1";
    QByteArray m_table;
};

} // namespace

CubeLut readCubeLut(const QString &path)
{
    constexpr qint64 longestLine = 1000;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {{}, QStringLiteral("%1: %2").arg(path, file.errorString())};
    CubeReader reader;
    QString error;
    int line = 0;
    while (error.isEmpty() && !file.atEnd()) {
        ++line;
        const QByteArray content = file.readLine(longestLine);
        error = content.size() == longestLine - 1 && !content.endsWith('\n')
                    ? QStringLiteral("the line is too long for a table of colours")
                    : reader.take(content);
    }
    if (error.isEmpty())
        error = reader.finish();
    if (!error.isEmpty())
        return {{}, QStringLiteral("%1:%2: %3").arg(path).arg(line).arg(error)};
    return {reader.table(), {}};
}

} // namespace filmwright
