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

} // namespace

PlaybackModel::PlaybackModel(PluginClient& plugin, const RequestTimeouts& watch, int patience)
    : m_plugin(plugin), m_watch(watch), m_patience(patience)
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
    for (std::size_t row = m_entries.size(); row-- > 0;) {
        const Entry& entry = m_entries[row];
        if (entry.group == group && entry.id == id && !isLive(entry)) {
            removeRow(row);
        }
    }
    Entry entry{group, id, name, fileName, length, Asked, 0, QString(), QElapsedTimer(), 0, 0};
    entry.since.start();
    beginInsertRows(QModelIndex(), rowCount(), rowCount());
    m_entries.push_back(entry);
    endInsertRows();
    Q_EMIT countChanged();
    const quint64 before = m_watch.lastSent();
    if (group) {
        m_plugin.playGroupAudio(id, file);
    } else {
        m_plugin.playAudio(id, file);
    }
    if (m_watch.lastSent() == before || !m_watch.lastAccepted()) {
        end(m_entries.size() - 1, Failed, tr("the server cannot be asked"));
        return;
    }
    m_entries.back().request = m_watch.lastSent();
}

void PlaybackModel::stop(int row)
{
    if (row < 0 || row >= rowCount()) {
        return;
    }
    Entry& entry = m_entries[static_cast<std::size_t>(row)];
    const quint64 before = m_watch.lastSent();
    if (entry.group) {
        m_plugin.stopCurrentGroupAudio(entry.id);
    } else {
        m_plugin.stopCurrentAudio(entry.id);
    }
    if (m_watch.lastSent() == before || !m_watch.lastAccepted()) {
        Q_EMIT failed(tr("\"%1\" was not stopped on %2: %3")
                          .arg(entry.fileName, entry.name, tr("the server cannot be asked")));
        return;
    }
    entry.stopRequest = m_watch.lastSent();
}

void PlaybackModel::dismiss(int row)
{
    if (row >= 0 && row < rowCount()) {
        removeRow(static_cast<std::size_t>(row));
    }
}

void PlaybackModel::removeRow(std::size_t row)
{
    beginRemoveRows(QModelIndex(), static_cast<int>(row), static_cast<int>(row));
    m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(row));
    endRemoveRows();
    Q_EMIT countChanged();
}

void PlaybackModel::replyArrived(const QString& /*command*/, const QString& returnCode,
                                 const QString& errorText, quint64 request, const QVariant& result)
{
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [request](const Entry& entry) {
        return entry.stopRequest == request ||
               (entry.request == request && (isLive(entry) || entry.state == Unanswered));
    });
    if (request == 0 || found == m_entries.end()) {
        return;
    }
    const auto row = static_cast<std::size_t>(found - m_entries.begin());
    if (found->stopRequest == request) {
        stopAnswered(row, returnCode, errorText);
        return;
    }
    if (returnCode != ReturnCode::success) {
        ended(row, returnCode, errorText);
        return;
    }
    const int progress = result.toMap().value(Words::progress).toInt();
    if (progress >= Limits::maxProgressPercent) {
        end(row, Ended);
        return;
    }
    found->state = Playing; // also when the answer came late
    found->problem.clear();
    found->since.start();
    m_timer.start();
    found->progress = qMax(0, progress) / static_cast<qreal>(Limits::maxProgressPercent);
    changed(row);
}

/** The last reply to a playback that was not played to the end. */
void PlaybackModel::ended(std::size_t row, const QString& returnCode, const QString& errorText)
{
    const Entry& entry = m_entries[row];
    const bool stopped = returnCode == ReturnCode::playbackStopped;
    const bool displaced = returnCode == ReturnCode::speakerTaken;
    const bool byOurselves =
        (stopped && entry.stopRequest != 0) ||
        (displaced &&
         std::any_of(m_entries.begin() + static_cast<std::ptrdiff_t>(row) + 1, m_entries.end(),
                     [&](const Entry& other) { return other.group == entry.group && other.id == entry.id; }));
    if (byOurselves) {
        removeRow(row); // who did it knows
        return;
    }
    end(row, stopped || displaced ? Stopped : Failed, ErrorMessages::of(returnCode, errorText));
}

void PlaybackModel::stopAnswered(std::size_t row, const QString& returnCode, const QString& errorText)
{
    if (returnCode == ReturnCode::success) {
        removeRow(row);
        return;
    }
    const Entry& entry = m_entries[row];
    const QString text = tr("\"%1\" was not stopped on %2: %3")
                             .arg(entry.fileName, entry.name, ErrorMessages::of(returnCode, errorText));
    m_entries[row].stopRequest = 0;
    Q_EMIT failed(text);
}

void PlaybackModel::playAudioError(const QString& target, const QString& file, const QString& error,
                                   const QString& schedule)
{
    // Not a row's end: names are not unique, and a group plays on with the speakers that are left.
    Q_EMIT failed(
        schedule.isEmpty()
            ? tr("\"%1\" was not played on %2: %3").arg(file, target, error)
            : tr("Schedule \"%1\": \"%2\" was not played on %3: %4").arg(schedule, file, target, error));
}

void PlaybackModel::timedOut(quint64 request)
{
    for (std::size_t row = 0; row < m_entries.size(); ++row) {
        if (m_entries[row].state == Asked && m_entries[row].request == request) {
            end(row, Unanswered, tr("no answer from the server"));
            return;
        }
    }
}

void PlaybackModel::forget()
{
    for (std::size_t row = 0; row < m_entries.size(); ++row) {
        if (isLive(m_entries[row]) || m_entries[row].state == Unanswered) {
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
    bool playing = false;
    for (std::size_t row = 0; row < m_entries.size(); ++row) {
        const Entry& entry = m_entries[row];
        // A file of unknown length may be reported on at its end alone.
        if (entry.state == Playing && entry.length > 0 &&
            entry.since.elapsed() > qint64{entry.length} + m_patience) {
            end(row, Unanswered, tr("no answer from the server"));
        }
        playing = playing || entry.state == Playing;
    }
    if (!playing) {
        m_timer.stop();
    }
}
