#pragma once

#include <QList>
#include <QTranslator>
#include <QWidget>

#include "ServerInfo.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

// The settings page: interface language, VPN protocol and the start-up, kill-switch,
// local-devices and time-zone options. Owns the application's translator.
class SettingsWindow : public QWidget
{
    Q_OBJECT

public:
    enum Mode {
        Lite = 0,
        Full = 1,
    };

    explicit SettingsWindow(QWidget* parent = nullptr);
    ~SettingsWindow() override;

    void setVersion(QString version);
    void showWithMode(Mode mode);
    void loadSettings(QList<PROTOCOL_TYPE> ids);
    void saveSettings();
    void loadDefaults();
    void loadLanguage();
    void fillProto(QList<PROTOCOL_TYPE> ids);
    void setEnabledPage(bool enabled);

    // "%1/.config/autostart/tavirn.desktop" under the user's home.
    static QString autostartPath();

    QComboBox* languageBox() const { return m_cbLanguage; }
    QComboBox* protocolBox() const { return m_cbProto; }
    QCheckBox* launchOnStart() const { return m_cbLaunchOnStart; }
    QCheckBox* autoconnectOnStart() const { return m_cbAutoconnectOnStart; }
    QCheckBox* changeTimezone() const { return m_cbChangeTimezone; }
    QCheckBox* killSwitch() const { return m_cbKillSwitch; }
    QCheckBox* allowLocalDevices() const { return m_cbAllowLocalDevices; }
    QPushButton* backButton() const { return m_pbBack; }

signals:
    void back();
    void changed();

public slots:
    void onSave();
    void onProtoChanged();
    void onLanguageChange(int index);

protected:
    void changeEvent(QEvent* event) override;

private:
    void buildForm();
    void retranslate();
    void writeAutostart();
    QCheckBox* addOption(const char* name, QLabel** note);

    QTranslator m_translator;
    QList<PROTOCOL_TYPE> m_protocols;

    QPushButton* m_pbBack;
    QLabel* m_lbTitle;
    QLabel* m_lbLanguage;
    QComboBox* m_cbLanguage;
    QLabel* m_lbProto;
    QComboBox* m_cbProto;
    QCheckBox* m_cbLaunchOnStart;
    QCheckBox* m_cbAutoconnectOnStart;
    QCheckBox* m_cbChangeTimezone;
    QLabel* m_lbChangeTimezoneNote;
    QCheckBox* m_cbKillSwitch;
    QLabel* m_lbKillSwitchNote;
    QCheckBox* m_cbAllowLocalDevices;
    QLabel* m_lbAllowLocalDevicesNote;
    QLabel* m_lbVersionTitle;
    QLabel* m_lbAppVersion;
    QMetaObject::Connection m_protoConnection;
};
