#pragma once

#include "platform/TrelLogUtl.h"

#include <QString>
#include <QStringList>

#include <vector>

/** Stands in the log object's place while it lives and keeps what is logged. */
class LogCapture
{
public:
    struct Check
    {
        unsigned selector;
        int reserved;
        QString file;
        int line;
    };

    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /** The object that the code under test sees; entries may be cleared. */
    LogObject& object() { return m_object; }

    /** What checkLevel answers for all levels; 0 prints. */
    void setCheckResult(int result) { m_checkResult = result; }

    /** Formatted messages of all levels, in order. */
    const QStringList& messages() const { return m_messages; }

    /** Messages without Enter and Leave lines. */
    QStringList errors() const;

    const std::vector<Check>& checks() const { return m_checks; }

    void clear();

private:
    LogObject m_object{};
    LogObject* m_previous;
    int m_checkResult = 0;
    QStringList m_messages;
    std::vector<Check> m_checks;
};
