// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

// What a song row reads from its file, loaded on the thread pool when the row
// is shown: the length (0 until known, and when unknown or not finite) and the
// artist tag (empty when absent). A row that shows another file loads again;
// a row that goes away drops the answer.
class TrackRowInfo : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString path READ path WRITE setPath NOTIFY pathChanged)
    Q_PROPERTY(double duration READ duration NOTIFY loaded)
    Q_PROPERTY(QString artist READ artist NOTIFY loaded)

public:
    using QObject::QObject;

    QString path() const { return m_path; }
    void setPath(const QString &path);
    double duration() const { return m_duration; }
    QString artist() const { return m_artist; }

Q_SIGNALS:
    void pathChanged();
    void loaded();

private:
    QString m_path;
    double m_duration = 0;
    QString m_artist;
    quint64 m_request = 0;
};
