#include "desk/DeskSettings.h"

#include <QGuiApplication>
#include <QPalette>

namespace {

const QString themeKey = QStringLiteral("theme");
const QString languageKey = QStringLiteral("language");
const QString serverKey = QStringLiteral("lastServer");
const QString systemTheme = QStringLiteral("system");
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
