#include "tests/desk/QmlComplaints.h"

#include <QRegularExpression>

namespace {

QStringList complaints;
QtMessageHandler formerHandler = nullptr;

void keep(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type != QtDebugMsg && type != QtInfoMsg && QmlComplaints::isOne(text, context.file)) {
        complaints.append(text);
    }
    formerHandler(type, context, text);
}

} // namespace

bool QmlComplaints::isOne(const QString& text, const char* file)
{
    static const QRegularExpression ofQml(QStringLiteral(R"(\.qml\b|\bQML|\bQQuick|\bQQml|\bQt Quick)"));
    return text.contains(ofQml) || QLatin1String(file).endsWith(QLatin1String(".qml"));
}

void QmlComplaints::watch()
{
    if (formerHandler == nullptr) {
        formerHandler = qInstallMessageHandler(keep);
    }
}

QStringList QmlComplaints::take()
{
    QStringList taken;
    taken.swap(complaints);
    return taken;
}
