// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Banner.h"
#include "model/Track.h"
#include "model/TrackMetadata.h"

#include <QAbstractListModel>
#include <QHash>
#include <QSet>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

// The untagged-songs screen: the songs missing a title, artist or album, a
// selection, and the batch editor that writes the three tags into many files.
//
//   load(tracks) ─ readMetadata on the pool ─► metadata ─► rows (untagged only)
//   editSelected / editOne ─► editing songs, initial values ─► the panel
//   saveBatch ─ one file after another on the pool, progress ─► metadata updated,
//                "Saved to N files" in the screen's own banner; files that could
//                not be saved keep the editor open, listed in saveError
class UntaggedSongs : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by the main state")
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(int count READ count NOTIFY rowsChanged)
    Q_PROPERTY(int selectedCount READ selectedCount NOTIFY selectionChanged)
    Q_PROPERTY(bool showEditor READ showEditor NOTIFY editorChanged)
    Q_PROPERTY(int editingCount READ editingCount NOTIFY editorChanged)
    Q_PROPERTY(QString editingFileName READ editingFileName NOTIFY editorChanged)
    // {title, artist, album}: empty strings unless one song with known tags is edited.
    Q_PROPERTY(QVariantMap initialValues READ initialValues NOTIFY editorChanged)
    Q_PROPERTY(bool isSaving READ isSaving NOTIFY savingChanged)
    Q_PROPERTY(int savedSoFar READ savedSoFar NOTIFY savingChanged)
    Q_PROPERTY(Banner *message READ message CONSTANT)
    // The files the last save could not write, one line each; empty when all were.
    Q_PROPERTY(QString saveError READ saveError NOTIFY editorChanged)

public:
    enum Role { TrackIdRole = Qt::UserRole + 1, NameRole, MissingRole, SelectedRole };

    // How long "Saved to N files" stays.
    static constexpr int messageMs = 2500;

    explicit UntaggedSongs(QObject *parent = nullptr);

    static bool isUntagged(const TrackMetadata &meta);
    static QString missingFieldsLabel(const std::optional<TrackMetadata> &meta);
    static QString savedMessage(int files);

    // Starts the screen afresh: no tags, no selection, no message; reads all.
    void load(const QList<Track> &tracks);
    bool isLoading() const { return m_loading; }
    int count() const { return int(m_rows.size()); }
    int selectedCount() const { return int(m_selected.size()); }
    bool showEditor() const { return m_showEditor; }
    int editingCount() const { return int(m_editing.size()); }
    QString editingFileName() const;
    QVariantMap initialValues() const;
    bool isSaving() const { return m_saving; }
    QString saveError() const { return m_saveError; }
    int savedSoFar() const { return m_savedSoFar; }
    Banner *message() { return &m_message; }
    std::optional<TrackMetadata> metadata(const QUuid &id) const;

    Q_INVOKABLE void toggleSelection(const QString &trackId);
    Q_INVOKABLE void toggleSelectAll();
    Q_INVOKABLE void editSelected();
    Q_INVOKABLE void editOne(const QString &trackId);
    Q_INVOKABLE void closeEditor();
    // Empty fields keep each song's value. Files are written off the GUI
    // thread, one after another; saveFinished(saved) follows.
    Q_INVOKABLE void saveBatch(const QString &title, const QString &artist, const QString &album);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void isLoadingChanged();
    void rowsChanged();
    void selectionChanged();
    void editorChanged();
    void savingChanged();
    void saveFinished(int saved);
    // These files were written: what was read of them is stale.
    void tagsWritten(const QList<Track> &songs);

private:
    void rebuildRows();
    void openEditor();
    struct Outcome
    {
        QList<QUuid> saved;
        QList<Track> savedSongs;
        QStringList failures; // "Could not save 'x.mp3': reason"
    };
    void finishSave(const Outcome &outcome, const std::optional<QString> &title,
                    const std::optional<QString> &artist, const std::optional<QString> &album);

    QList<Track> m_tracks;
    QHash<QUuid, TrackMetadata> m_metadata;
    QList<Track> m_rows;
    QSet<QUuid> m_selected;
    QList<Track> m_editing;
    bool m_loading = false;
    bool m_showEditor = false;
    bool m_saving = false;
    int m_savedSoFar = 0;
    QString m_saveError;
    Banner m_message;
    quint64 m_generation = 0;
};
