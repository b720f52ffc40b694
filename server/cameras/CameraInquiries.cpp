#include "server/cameras/CameraInquiries.h"

#include "protocol/Words.h"

#include <QPointer>

#include <algorithm>

namespace {

/** The value of "speaks" or "hears". */
QString wordOf(CameraAbility ability)
{
    switch (ability) {
    case CameraAbility::No:
        return QStringLiteral("no");
    case CameraAbility::Unknown:
        break;
    case CameraAbility::Yes:
        return QStringLiteral("yes");
    }
    return QStringLiteral("unknown");
}

QVariantList listOf(const QStringList& texts)
{
    QVariantList list;
    for (const QString& text : texts) {
        list.append(text);
    }
    return list;
}

QVariantList answerOf(const QList<FoundCameraEntry>& cameras)
{
    QVariantList answer;
    for (const FoundCameraEntry& camera : cameras) {
        answer.append(QVariantMap{{Words::camName, camera.name},
                                  {Words::hardware, camera.hardware},
                                  {Words::location, camera.location},
                                  {Words::camAddress, camera.address},
                                  {Words::remark, camera.remark}});
    }
    return answer;
}

QVariantMap answerOf(const CameraRecord& camera, const CameraReport& report)
{
    QVariantList streams;
    for (const ReportedStream& stream : report.streams) {
        streams.append(QVariantMap{{Words::camName, stream.name},
                                   {Words::camAddress, stream.address},
                                   {Words::speaks, wordOf(stream.speaks)},
                                   {Words::hears, wordOf(stream.hears)}});
    }
    return {{Vocabulary::camId, camera.id},
            {Words::camAddress, camera.address},
            {Words::manufacturer, report.manufacturer},
            {Words::model, report.model},
            {Words::firmware, report.firmware},
            {Words::speaks, wordOf(report.speaks)},
            {Words::hears, wordOf(report.hears)},
            {Words::speaksReason, report.speaksReason},
            {Words::hearsReason, report.hearsReason},
            {Words::voiceCodecs, listOf(report.voiceCodecs)},
            {Words::talkCodecs, listOf(report.talkCodecs)},
            {Words::streams, streams},
            {Words::remarks, listOf(report.remarks)},
            {Vocabulary::error, report.error}};
}

ServerReply tooMany()
{
    return refusal(ReturnCode::tooManyRequests,
                   QStringLiteral("too many searches and questions are under way; try again"));
}

} // namespace

CameraInquiries::CameraInquiries(std::vector<Backend> backends, std::vector<AbsentCameraKind> absent)
    : m_backends(std::move(backends)), m_absent(std::move(absent))
{
}

/** Returns for how many answers a session waits. */
int CameraInquiries::waitingOf(const ServerSession& session) const
{
    const auto searches =
        std::count_if(m_searches.begin(), m_searches.end(),
                      [&session](const Waiting& waiting) { return waiting.session == &session; });
    const auto questions =
        std::count_if(m_questions.begin(), m_questions.end(),
                      [&session](const auto& waiting) { return waiting.second.session == &session; });
    return static_cast<int>(searches + questions);
}

QString CameraInquiries::whyNoSearch() const
{
    return m_absent.empty() ? QStringLiteral("this server has no cameras that can be looked for")
                            : m_absent.front().reason;
}

std::optional<ServerReply> CameraInquiries::find(ServerSession& session)
{
    if (waitingOf(session) >= maxOfSession) {
        return tooMany();
    }
    if (m_searching == 0 && !startSearch()) {
        return refusal(ReturnCode::badCameraKind, whyNoSearch());
    }
    m_searches.push_back({&session, session.replyLater()});
    return std::nullopt;
}

/** Starts a search in all back ends; false when none of them has one. */
bool CameraInquiries::startSearch()
{
    m_found = FoundCameras();
    const QPointer<CameraInquiries> self(this);
    for (const auto& [kind, backend] : m_backends) {
        const bool started = backend->findCameras([self](const FoundCameras& found) {
            if (self) {
                self->takeFound(found);
            }
        });
        m_searching += started ? 1 : 0;
    }
    return m_searching > 0;
}

void CameraInquiries::takeFound(const FoundCameras& found)
{
    m_found.cameras += found.cameras;
    m_found.error = m_found.error.isEmpty() ? found.error : m_found.error;
    if (--m_searching > 0) {
        return;
    }
    const bool failed = m_found.cameras.isEmpty() && !m_found.error.isEmpty();
    const ServerReply reply =
        failed ? refusal(ReturnCode::cameraOffline, m_found.error) : done(answerOf(m_found.cameras));
    for (const Waiting& waiting : m_searches) {
        waiting.reply.send(reply);
    }
    m_searches.clear();
    m_found = FoundCameras();
}

void CameraInquiries::ask(const ServerSession& session, const CameraRecord& camera, const LateReply& reply)
{
    const int waiting = waitingOf(session);
    if (waiting >= maxOfSession || m_asked >= (waiting > 0 ? maxAsked : maxAskedInAll)) {
        reply.send(tooMany());
        return;
    }
    const auto backend = std::find_if(m_backends.begin(), m_backends.end(),
                                      [&](const Backend& each) { return each.first == camera.kind; });
    const QPointer<CameraInquiries> self(this);
    const quint64 question = ++m_lastQuestion;
    const bool asked = backend != m_backends.end() &&
                       backend->second->askCamera(camera, [self, question](const CameraReport& report) {
                           if (self) {
                               self->takeReport(question, report);
                           }
                       });
    if (!asked) {
        reply.send(refusal(ReturnCode::badCameraKind,
                           QStringLiteral("cameras of the kind \"%1\" cannot be asked").arg(camera.kind)));
        return;
    }
    ++m_asked;
    m_questions.emplace(question, Waiting{&session, reply, camera});
}

void CameraInquiries::takeReport(quint64 question, const CameraReport& report)
{
    --m_asked;
    const auto waiting = m_questions.find(question);
    if (waiting != m_questions.end()) {
        waiting->second.reply.send(done(answerOf(waiting->second.camera, report)));
        m_questions.erase(waiting);
    }
}

void CameraInquiries::closeSession(const ServerSession& session)
{
    m_searches.erase(std::remove_if(m_searches.begin(), m_searches.end(),
                                    [&](const Waiting& waiting) { return waiting.session == &session; }),
                     m_searches.end());
    for (auto question = m_questions.begin(); question != m_questions.end();) {
        question = question->second.session == &session ? m_questions.erase(question) : std::next(question);
    }
}
