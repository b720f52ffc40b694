#include "tests/support/LogCapture.h"

#include "src/vocabulary/LogGate.h"

LogCapture::LogCapture() : m_previous(g_logObject)
{
    m_object.context = this;
    m_object.checkLevel = [](void* context, unsigned selector, int reserved, const char* file, int line) {
        auto* self = static_cast<LogCapture*>(context);
        self->m_checks.push_back({selector, reserved, QString::fromUtf8(file), line});
        return self->m_checkResult;
    };
    m_object.print = [](void* context, const char* format, va_list args) {
        static_cast<LogCapture*>(context)->m_messages.append(QString::vasprintf(format, args));
    };
    g_logObject = &m_object;
}

LogCapture::~LogCapture()
{
    g_logObject = m_previous;
}

QStringList LogCapture::errors() const
{
    QStringList errors;
    for (const QString& message : m_messages) {
        if (!message.endsWith(QLatin1String(", Enter")) && !message.endsWith(QLatin1String(", Leave"))) {
            errors.append(message);
        }
    }
    return errors;
}

void LogCapture::clear()
{
    m_messages.clear();
    m_checks.clear();
}
