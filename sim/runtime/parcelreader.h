#pragma once

#include "runtime/parcel.h"

#include <QString>

namespace SimRuntime {

/// Reads the items of a Parcel more strictly than Android does, so that a caller's mistakes show.
///
/// The first item that is not exactly as it should be (cut short, impossible length, missing
/// terminator, padding that is not zero, an object that is not listed or a plain item across one)
/// ends the reading: problem() says what it was, and every later read gives its default.
class ParcelReader
{
public:
    explicit ParcelReader(const Parcel &parcel);

    qint32 int32();           ///< default 0
    qint64 int64();           ///< default 0
    QString string16();       ///< null for the null string, which is also the default
    QByteArray byteArray();   ///< null for the null array, which is also the default
    ObjectReference object(); ///< default the null object
    qint32 count(int smallestItem, bool *isNull); ///< of a list; 0 for the null list

    int remaining() const { return m_parcel.data.size() - m_position; }
    bool failed() const { return !m_problem.isNull(); }

    /// What was wrong first; the null string when nothing was.
    QString problem() const { return m_problem; }

    /// Ends the reading with a problem that only the caller can see.
    void fail(const QString &problem);

private:
    const char *take(int size, const char *what);
    bool takePadding(int size);
    bool crossesObject(int size) const;

    Parcel m_parcel;
    int m_position = 0;
    QString m_problem;
};

} // namespace SimRuntime
