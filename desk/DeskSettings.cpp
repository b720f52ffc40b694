#include "desk/DeskSettings.h"

#include <QDir>
#include <QGuiApplication>
#include <QPalette>
#include <QTranslator>

namespace {

const QString themeKey = QStringLiteral("theme");
const QString languageKey = QStringLiteral("language");
const QString serverKey = QStringLiteral("lastServer");
const QString systemTheme = QStringLiteral("system");
constexpr char context[] = "DeskSettings";
constexpr struct
{
    const char* text;
    const char* comment;
} english = QT_TRANSLATE_NOOP3("DeskSettings", "English", "this language, in itself");
constexpr int darkBelow = 128; // lightness

} // namespace

DeskSettings::DeskSettings(const QString& file) : m_settings(file, QSettings::IniFormat) {}

QString DeskSettings::theme() const
{
    return m_settings.value(themeKey, systemTheme).toString();
}

void DeskSettings::setTheme(const QString& theme)
{
    if (theme != this->theme()) {
        m_settings.setValue(themeKey, theme);
        Q_EMIT themeChanged();
    }
}

QString DeskSettings::language() const
{
    return m_settings.value(languageKey).toString();
}

void DeskSettings::setLanguage(const QString& language)
{
    if (language != this->language()) {
        m_settings.setValue(languageKey, language);
        Q_EMIT languageChanged();
    }
}

QVariantList DeskSettings::languages() const
{
    QVariantList list;
    const QDir folder(QStringLiteral(":/translations"));
    const QStringList files = folder.entryList({QStringLiteral("voicedesk_*.qm")}, QDir::Files, QDir::Name);
    for (const QString& file : files) {
        QTranslator translator;
        if (!translator.load(folder.filePath(file))) {
            continue;
        }
        const QString name = translator.translate(context, english.text, english.comment);
        list.append(
            QVariantMap{{QStringLiteral("code"), QFileInfo(file).baseName().section(QLatin1Char('_'), 1)},
                        {QStringLiteral("name"), name.isEmpty() ? QString::fromLatin1(english.text) : name}});
    }
    return list;
}

bool DeskSettings::isDark() const
{
    if (theme() == systemTheme) {
        return QGuiApplication::palette().color(QPalette::Window).lightness() < darkBelow;
    }
    return theme() == QLatin1String("dark");
}

QString DeskSettings::lastServer() const
{
    return m_settings.value(serverKey).toString();
}

void DeskSettings::setLastServer(const QString& url)
{
    if (url != lastServer()) {
        m_settings.setValue(serverKey, url);
        Q_EMIT lastServerChanged();
    }
}
