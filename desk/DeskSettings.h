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
    /** The address of the server that was signed in to last; empty for none. */
    Q_PROPERTY(QString lastServer READ lastServer WRITE setLastServer NOTIFY lastServerChanged)

public:
    /** @param file of the settings */
    explicit DeskSettings(const QString& file);

    /** Returns the property theme. */
    QString theme() const;
    /** Sets the property theme. */
    void setTheme(const QString& theme);
    /** Returns the property language. */
    QString language() const;
    /** Sets the property language. */
    void setLanguage(const QString& language);
    /** Returns the property languages. */
    QVariantList languages() const;
    /** Returns the property dark. */
    bool isDark() const;
    /** Returns the property lastServer. */
    QString lastServer() const;
    /** Sets the property lastServer. */
    void setLastServer(const QString& url);

Q_SIGNALS:
    /** Emitted when theme or dark has changed. */
    void themeChanged();
    /** Emitted when language has changed. */
    void languageChanged();
    /** Emitted when lastServer has changed. */
    void lastServerChanged();

private:
    QSettings m_settings;
};
