#include "SettingsWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDebug>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSaveFile>
#include <QVBoxLayout>

#include "LocalSettings.h"
#include "VpnProtocols.h"
#include "WidgetStyle.h"

namespace {

// Qt lays the whole interface out right to left while the installed catalogue translates this entry of Qt's
// own as "RTL" (the Arabic one does). Marked here so that lupdate keeps it in the catalogues.
[[maybe_unused]] const char* const LayoutDirectionEntry = QT_TRANSLATE_NOOP("QGuiApplication", "QT_LAYOUT_DIRECTION");

struct Language
{
    const char* code;
    const char* name;
};

// Each language under its own name, in the order the menu shows them.
const Language languages[] = {
    {"ar", "العربية"},
    {"de", "Deutsch"},
    {"en", "English"},
    {"es", "Español"},
    {"fr", "Français"},
    {"hi", "हिन्दी"},
    {"it", "Italiano"},
    {"ja", "日本語"},
    {"ko", "한국어"},
    {"pl", "Polski"},
    {"pt", "Português"},
    {"ru", "Русский"},
    {"tr", "Türkçe"},
    {"uk", "Українська"},
    {"vi", "Tiếng Việt"},
    {"zh_CN", "简体中文"},
};

// The protocol labels are translated under the table's own context.
const char* const protocolLabels[] = {
    QT_TRANSLATE_NOOP("VpnProtocol", "OpenVPN TCP (safer)"),
    QT_TRANSLATE_NOOP("VpnProtocol", "OpenVPN UDP (faster)"),
    QT_TRANSLATE_NOOP("VpnProtocol", "Imitation HTTPS"),
};

const QByteArray autostartEntry = QByteArrayLiteral("[Desktop Entry]\nType=Application\nExec='%1' -h\nName=Tavrin");
const QString executablePath = QStringLiteral("/usr/bin/tavrin");

bool isTrue(const QVariant& value)
{
    return value.toString() == QLatin1String("true");
}

} // namespace

SettingsWindow::SettingsWindow(QWidget* parent)
    : QWidget(parent)
{
    Q_UNUSED(protocolLabels);
    buildForm();
    for (const Language& language : languages)
        m_cbLanguage->addItem(QString::fromUtf8(language.name), QString::fromLatin1(language.code));

    connect(m_pbBack, &QPushButton::clicked, this, &SettingsWindow::onSave);
    for (QCheckBox* box :
         {m_cbLaunchOnStart, m_cbAutoconnectOnStart, m_cbChangeTimezone, m_cbKillSwitch, m_cbAllowLocalDevices})
        connect(box, &QCheckBox::clicked, this, &SettingsWindow::changed);
    connect(m_cbProto, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &SettingsWindow::changed);
    connect(m_cbLanguage, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &SettingsWindow::onLanguageChange);
    // The local-devices allowance only means something inside the kill switch.
    connect(m_cbKillSwitch, &QCheckBox::toggled, m_cbAllowLocalDevices, &QWidget::setVisible);
    connect(m_cbKillSwitch, &QCheckBox::toggled, m_lbAllowLocalDevicesNote, &QWidget::setVisible);
    m_cbAllowLocalDevices->setVisible(false);
    m_lbAllowLocalDevicesNote->setVisible(false);
    retranslate();
}

SettingsWindow::~SettingsWindow()
{
    if (!m_translator.isEmpty())
        QCoreApplication::removeTranslator(&m_translator);
}

QCheckBox* SettingsWindow::addOption(const char* name, QLabel** note)
{
    auto* box = new QCheckBox(this);
    box->setObjectName(QLatin1String(name));
    box->setCursor(Qt::PointingHandCursor);
    if (note) {
        *note = new QLabel(this);
        (*note)->setObjectName(QLatin1String(name) + QStringLiteral("Note"));
        (*note)->setProperty("note", true);
        (*note)->setWordWrap(true);
    }
    return box;
}

void SettingsWindow::buildForm()
{
    WidgetStyle::setUpPage(this, QStringLiteral("SettingsWindow"));

    m_pbBack = new QPushButton(this);
    WidgetStyle::setUpBackButton(m_pbBack);
    m_lbTitle = new QLabel(this);
    QHBoxLayout* top = WidgetStyle::topRow(m_pbBack, m_lbTitle, nullptr);

    m_lbLanguage = new QLabel(this);
    m_lbLanguage->setProperty("fieldTitle", true);
    m_cbLanguage = new QComboBox(this);
    m_cbLanguage->setObjectName(QStringLiteral("cbLanguage"));
    m_lbProto = new QLabel(this);
    m_lbProto->setProperty("fieldTitle", true);
    m_cbProto = new QComboBox(this);
    m_cbProto->setObjectName(QStringLiteral("cbProto"));
    m_cbLaunchOnStart = addOption("cbLaunchOnStart", nullptr);
    m_cbAutoconnectOnStart = addOption("cbAutoconnectOnStart", nullptr);
    m_cbChangeTimezone = addOption("cbChangeTimezone", &m_lbChangeTimezoneNote);
    m_cbKillSwitch = addOption("cbKillSwitch", &m_lbKillSwitchNote);
    m_cbAllowLocalDevices = addOption("cbAllowLocalDevices", &m_lbAllowLocalDevicesNote);
    m_lbVersionTitle = new QLabel(this);
    m_lbVersionTitle->setObjectName(QStringLiteral("lbVersionTitle"));
    m_lbVersionTitle->setProperty("note", true);
    m_lbAppVersion = new QLabel(this);
    m_lbAppVersion->setObjectName(QStringLiteral("lbAppVersion"));
    m_lbAppVersion->setProperty("note", true);

    auto* body = new QVBoxLayout;
    body->setContentsMargins(20, 8, 16, 12);
    body->setSpacing(4);
    body->addWidget(m_lbLanguage);
    body->addWidget(m_cbLanguage);
    body->addSpacing(10);
    body->addWidget(m_lbProto);
    body->addWidget(m_cbProto);
    body->addSpacing(14);
    body->addWidget(m_cbLaunchOnStart);
    body->addSpacing(6);
    body->addWidget(m_cbAutoconnectOnStart);
    body->addSpacing(6);
    body->addWidget(m_cbChangeTimezone);
    body->addWidget(m_lbChangeTimezoneNote);
    body->addSpacing(6);
    body->addWidget(m_cbKillSwitch);
    body->addWidget(m_lbKillSwitchNote);
    body->addSpacing(6);
    body->addWidget(m_cbAllowLocalDevices);
    body->addWidget(m_lbAllowLocalDevicesNote);
    body->addStretch(1);
    auto* version = new QHBoxLayout;
    version->setSpacing(4);
    version->addStretch(1);
    version->addWidget(m_lbVersionTitle);
    version->addWidget(m_lbAppVersion);
    version->addStretch(1);
    body->addLayout(version);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(top);
    layout->addLayout(body, 1);
}

void SettingsWindow::retranslate()
{
    m_lbTitle->setText(tr("Settings"));
    m_lbLanguage->setText(tr("Language:"));
    m_lbProto->setText(tr("Choose VPN protocol:"));
    m_cbLaunchOnStart->setText(tr("Launch on startup"));
    m_cbAutoconnectOnStart->setText(tr("Connect to VPN when app is started"));
    m_cbChangeTimezone->setText(tr("Change timezone using IP address"));
    m_lbChangeTimezoneNote->setText(tr("After connection to VPN server"));
    m_cbKillSwitch->setText(tr("Kill switch"));
    m_lbKillSwitchNote->setText(tr("IPv4, IPv6, DNS4, DNS6 leaks protection"));
    m_cbAllowLocalDevices->setText(tr("Allow access to local devices"));
    m_lbAllowLocalDevicesNote->setText(tr("Printers, routers, etc"));
    m_lbVersionTitle->setText(tr("Version:"));
}

void SettingsWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void SettingsWindow::setVersion(QString version)
{
    m_lbAppVersion->setText(version);
}

void SettingsWindow::showWithMode(Mode mode)
{
    switch (mode) {
    case Lite:
        m_cbKillSwitch->hide();
        m_lbKillSwitchNote->hide();
        m_cbAllowLocalDevices->hide();
        m_lbAllowLocalDevicesNote->hide();
        break;
    case Full:
        m_cbKillSwitch->show();
        m_lbKillSwitchNote->show();
        // The toggle only fires on a change; after the lite mode the pair must follow the box again.
        m_cbAllowLocalDevices->setVisible(m_cbKillSwitch->isChecked());
        m_lbAllowLocalDevicesNote->setVisible(m_cbKillSwitch->isChecked());
        break;
    }
    show();
}

void SettingsWindow::fillProto(QList<PROTOCOL_TYPE> ids)
{
    m_cbProto->clear();
    for (const VpnProtocol* row = gVpnProtocol; row->id != -1; ++row) {
        if (ids.contains(PROTOCOL_TYPE(row->id)))
            m_cbProto->addItem(QCoreApplication::translate("VpnProtocol", row->label.toUtf8().constData()),
                               row->shortName);
    }
}

void SettingsWindow::loadSettings(QList<PROTOCOL_TYPE> ids)
{
    const QSharedPointer<LocalSettings> settings = LocalSettings::instance();
    m_cbLaunchOnStart->setChecked(isTrue(settings->value(Keys::LaunchOnStart)));
    m_cbAutoconnectOnStart->setChecked(isTrue(settings->value(Keys::ConnectOnStart)));
    m_cbKillSwitch->setChecked(isTrue(settings->value(Keys::KillConnect)));
    m_cbAllowLocalDevices->setChecked(isTrue(settings->value(Keys::AllowLocalDevices)));
    m_cbChangeTimezone->setChecked(isTrue(settings->value(Keys::ChangeTimezone)));

    m_protocols = ids;
    fillProto(ids);
    m_cbProto->setCurrentIndex(0);
    const int stored = m_cbProto->findData(settings->value(Keys::OvpnProtocol).toString());
    if (stored >= 0)
        m_cbProto->setCurrentIndex(stored);

    // Made once: the slot does nothing, and repeated loads must not stack connections.
    if (!m_protoConnection)
        m_protoConnection = connect(
            m_cbProto, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &SettingsWindow::onProtoChanged);
    loadLanguage();
}

void SettingsWindow::onProtoChanged() { }

void SettingsWindow::loadLanguage()
{
    const QString systemCode = QLocale::system().name().section(QLatin1Char('_'), 0, 0).toLower();
    const QVariant stored = LocalSettings::instance()->value(Keys::Language);
    const QString code = stored.isValid() ? stored.toString() : systemCode;
    int index = m_cbLanguage->findData(code, Qt::UserRole, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index < 0)
        index = m_cbLanguage->findData(QStringLiteral("en"));
    // A first load may find the language already selected; it must still be installed.
    if (index == m_cbLanguage->currentIndex())
        onLanguageChange(index);
    else
        m_cbLanguage->setCurrentIndex(index);
}

void SettingsWindow::onLanguageChange(int index)
{
    if (!m_translator.isEmpty())
        QCoreApplication::removeTranslator(&m_translator);
    const QString code = m_cbLanguage->itemData(index).toString();
    if (!m_translator.load(QStringLiteral(":/translations/TavrinApp_%1").arg(code)))
        qDebug() << "No translation for" << code;
    if (!m_translator.isEmpty())
        QCoreApplication::installTranslator(&m_translator);
    retranslate();
    const QString protocol = m_cbProto->currentData().toString();
    fillProto(m_protocols);
    const int kept = m_cbProto->findData(protocol);
    m_cbProto->setCurrentIndex(kept >= 0 ? kept : 0);
}

void SettingsWindow::onSave()
{
    saveSettings();
    emit back();
}

void SettingsWindow::saveSettings()
{
    const QSharedPointer<LocalSettings> settings = LocalSettings::instance();
    settings->setValue(Keys::ConnectOnStart, m_cbAutoconnectOnStart->isChecked());
    settings->setValue(Keys::LaunchOnStart, m_cbLaunchOnStart->isChecked());
    settings->setValue(Keys::OvpnProtocol, m_cbProto->currentData().toString());
    settings->setValue(Keys::KillConnect, m_cbKillSwitch->isChecked());
    // There is no box for it: leak protection is never switched off.
    settings->setValue(Keys::IPv6LeakProtect, true);
    settings->setValue(Keys::AllowLocalDevices, m_cbAllowLocalDevices->isChecked());
    settings->setValue(Keys::ChangeTimezone, m_cbChangeTimezone->isChecked());
    const QString language = m_cbLanguage->currentData().toString();
    settings->setValue(Keys::Language, language);
    qDebug() << "Language saved:" << language;
    writeAutostart();
}

QString SettingsWindow::autostartPath()
{
    return QStringLiteral("%1/.config/autostart/tavirn.desktop").arg(QDir::homePath());
}

void SettingsWindow::writeAutostart()
{
    const QString path = autostartPath();
    if (!m_cbLaunchOnStart->isChecked()) {
        if (QFile::exists(path) && !QFile::remove(path))
            qDebug() << "Cannot remove the autostart entry" << path;
        return;
    }
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        qDebug() << "Cannot write the autostart entry" << path << file.errorString();
        return;
    }
    file.write(QString::fromLatin1(autostartEntry).arg(executablePath).toUtf8());
    if (!file.commit())
        qDebug() << "Cannot write the autostart entry" << path << file.errorString();
}

void SettingsWindow::loadDefaults()
{
    LocalSettings::instance()->createDefaultSettings();
}

void SettingsWindow::setEnabledPage(bool enabled)
{
    m_cbLaunchOnStart->setEnabled(enabled);
    m_cbAutoconnectOnStart->setEnabled(enabled);
    m_cbChangeTimezone->setEnabled(enabled);
    m_cbAllowLocalDevices->setEnabled(enabled);
}
