#pragma once

#include <QObject>
#include <QSettings>
#include <QVariantList>

/** What the desk remembers of its user's choices. */
class DeskSettings : public QObject
{
    Q_OBJECT
    /** "system", "light" or "dark". */
    Q_PROPERTY(QString theme READ theme WRITE setTheme NOTIFY themeChanged)
    /** The code of one of languages, or empty for the system's. */
    Q_PROPERTY(QString language READ language WRITE setLanguage NOTIFY languageChanged)
    /** The languages that the window has, by code: maps with "code", as "de", and "name", in itself. */
    Q_PROPERTY(QVariantList languages READ languages CONSTANT)
    /** Whether the look is dark, by the choice or by the system's colours. */
    Q_PROPERTY(bool dark READ isDark NOTIFY themeChanged)
    Q_PROPERTY(QString lastServer READ lastServer WRITE setLastServer NOTIFY lastServerChanged)

public:
    /** @param file of the settings */
    explicit DeskSettings(const QString& file);

    QString theme() const;
    void setTheme(const QString& theme);
    QString language() const;
    void setLanguage(const QString& language);
    QVariantList languages() const;
    bool isDark() const;
    QString lastServer() const;
    void setLastServer(const QString& url);

Q_SIGNALS:
    void themeChanged();
    void languageChanged();
    void lastServerChanged();

private:
    QSettings m_settings;
};
