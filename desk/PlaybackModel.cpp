#include "desk/PlaybackModel.h"

#include "client/PluginClient.h"
#include "desk/ErrorMessages.h"
#include "desk/RequestTimeouts.h"
#include "protocol/Limits.h"
#include "protocol/ServerReply.h"
#include "protocol/Words.h"

#include <algorithm>

namespace {

constexpr int tickInterval = 250; // ms
constexpr qint64 endSlack = 2000; // ms; another client's file may have taken the speaker: nobody reports that

} // namespace

PlaybackModel::PlaybackModel(PluginClient& plugin, const RequestTimeouts& watch)
    : m_plugin(plugin), m_watch(watch)
{
    m_timer.setInterval(tickInterval);
    connect(&m_timer, &QTimer::timeout, this, &PlaybackModel::tick);
    connect(&m_plugin, &PluginClient::playAudioError, this, &PlaybackModel::playAudioError);
}

int PlaybackModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

QVariant PlaybackModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount()) {
        return QVariant();
    }
    const Entry& entry = m_entries[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case TitleRole:
        return entry.fileName;
    case TargetRole:
        return entry.name;
    case ProgressRole:
        return entry.progress;
    case StateRole:
        return entry.state;
    case ProblemRole:
        return entry.problem;
    default:
        return QVariant();
    }
}

QHash<int, QByteArray> PlaybackModel::roleNames() const
{
    return {{TitleRole, "title"},
            {TargetRole, "target"},
            {ProgressRole, "progress"},
            {StateRole, "state"},
            {ProblemRole, "problem"}};
}

void PlaybackModel::changed(std::size_t row)
{
    const QModelIndex at = index(static_cast<int>(row));
    Q_EMIT dataChanged(at, at);
}

void PlaybackModel::end(std::size_t row, State state, const QString& problem)
{
    m_entries[row].state = state;
    m_entries[row].problem = problem;
    if (state == Ended) {
        m_entries[row].progress = 1;
    }
    changed(row);
}

void PlaybackModel::play(bool group, int id, const QString& name, int file, const QString& fileName,
                         int length)
{
    // A speaker plays one file at a time: the new one takes the place of the old one, and its row.
    for (std::size_t row = m_entries.size(); row-- > 0;) {
        if (m_entries[row].group == group && m_entries[row].id == id) {
            beginRemoveRows(QModelIndex(), static_cast<int>(row), static_cast<int>(row));
            m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(row));
            endRemoveRows();
        }
    }
    Entry entry{group, id, name, fileName, length, Asked, 0, QString(), QElapsedTimer(), 0};
    entry.since.start();
    beginInsertRows(QModelIndex(), rowCount(), rowCount());
    m_entries.push_back(entry);
    endInsertRows();
    Q_EMIT countChanged();
    if (group) {
        m_plugin.playGroupAudio(id, file);
    } else {
        m_plugin.playAudio(id, file);
    }
    m_entries.back().request = m_watch.lastSent();
}

void PlaybackModel::stop(int row)
{
    if (row < 0 || row >= rowCount()) {
        return;
    }
    const Entry& entry = m_entries[static_cast<std::size_t>(row)];
    if (entry.group) {
        m_plugin.stopCurrentGroupAudio(entry.id);
    } else {
        m_plugin.stopCurrentAudio(entry.id);
    }
    dismiss(row);
}

void PlaybackModel::dismiss(int row)
{
    if (row < 0 || row >= rowCount()) {
        return;
    }
    beginRemoveRows(QModelIndex(), row, row);
    m_entries.erase(m_entries.begin() + row);
    endRemoveRows();
    Q_EMIT countChanged();
}

void PlaybackModel::replyArrived(const QString& /*command*/, const QString& returnCode,
                                 const QString& errorText, quint64 request, const QVariant& result)
{
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(), [request](const Entry& e) {
        return e.request == request && (e.state == Asked || e.state == Playing);
    });
    if (request == 0 || entry == m_entries.end()) {
        return;
    }
    const auto row = static_cast<std::size_t>(entry - m_entries.begin());
    if (returnCode != ReturnCode::success) {
        end(row, Failed, ErrorMessages::of(returnCode, errorText));
        return;
    }
    const int progress = result.toMap().value(Words::progress).toInt();
    if (progress >= Limits::maxProgressPercent) {
        end(row, Ended);
        return;
    }
    if (entry->state == Asked) {
        entry->state = Playing;
        entry->since.start();
        m_timer.start();
    }
    entry->progress = qMax(0, progress) / static_cast<qreal>(Limits::maxProgressPercent);
    changed(row);
}

void PlaybackModel::playAudioError(const QString& target, const QString& file, const QString& error,
                                   const QString& schedule)
{
    for (std::size_t row = 0; row < m_entries.size(); ++row) {
        if (m_entries[row].name == target && m_entries[row].state != Ended) {
            end(row, Failed, error);
        }
    }
    Q_EMIT failed(
        schedule.isEmpty()
            ? tr("\"%1\" was not played on %2: %3").arg(file, target, error)
            : tr("Schedule \"%1\": \"%2\" was not played on %3: %4").arg(schedule, file, target, error));
}

void PlaybackModel::timedOut(quint64 request)
{
    for (std::size_t row = 0; row < m_entries.size(); ++row) {
        if (m_entries[row].state == Asked && m_entries[row].request == request) {
            end(row, Failed, tr("no answer from the server"));
            return;
        }
    }
}

void PlaybackModel::forget()
{
    for (std::size_t row = 0; row < m_entries.size(); ++row) {
        if (m_entries[row].state == Asked || m_entries[row].state == Playing) {
            end(row, Failed, tr("the connection to the server was lost"));
        }
    }
}

void PlaybackModel::clear()
{
    m_timer.stop();
    beginResetModel();
    m_entries.clear();
    endResetModel();
    Q_EMIT countChanged();
}

void PlaybackModel::tick()
{
    const auto live = [](const Entry& entry) { return entry.state == Playing; };
    const auto playing = std::count_if(m_entries.begin(), m_entries.end(), live);
    if (playing == 0) {
        m_timer.stop();
        return;
    }
    for (std::size_t row = 0; row < m_entries.size(); ++row) {
        Entry& entry = m_entries[row];
        if (entry.state != Playing) {
            continue;
        }
        const qint64 elapsed = entry.since.elapsed();
        if (entry.length > 0 && elapsed > entry.length + endSlack) {
            end(row, Ended);
        }
    }
}
