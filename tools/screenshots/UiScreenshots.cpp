// Renders the log viewer, the update dialog and the message boxes into PNG files, so that a
// person can look at them (scripts/screenshots runs this under Xvfb).
#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QTextStream>
#include <QVBoxLayout>

#include "CustomMessageBox.h"
#include "FlagPicture.h"
#include "MovableWidget.h"
#include "ProgressDlg.h"
#include "RotateWidget.h"
#include "SearchEdit.h"
#include "ShowLog.h"

namespace {

bool save(QWidget& widget, const QDir& dir, const QString& name)
{
    widget.show();
    QApplication::processEvents();
    const QString path = dir.filePath(name);
    if (!widget.grab().save(path)) {
        QTextStream(stderr) << "cannot write " << path << "\n";
        return false;
    }
    QTextStream(stdout) << path << "\n";
    widget.hide();
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    const QDir dir(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("screenshots"));
    if (!dir.mkpath(QStringLiteral(".")))
        return 1;
    bool ok = true;

    ShowLog log;
    const char* lines[] = {
        "1678000000,I,OpenVPN 2.6.3 x86_64-pc-linux-gnu [SSL (OpenSSL)] [LZO] [LZ4] [EPOLL] [MH/PKTINFO] [AEAD]",
        "1678000000,I,MANAGEMENT: >STATE:1678000000 RESOLVE",
        "1678000000,I,library versions: OpenSSL 3.0.11 19 Sep 2023, LZO 2.10",
        "1678000001,I,TCP/UDP: Preserving recently used remote address: [AF_INET]10.20.30.40:1194",
        "1678000001,I,UDPv4 link remote: [AF_INET]10.20.30.40:1194",
        "1678000001,I,TLS: Initial packet from [AF_INET]10.20.30.40:1194, sid=5c2e1f0a 9d3b7c41",
        "1678000002,I,VERIFY OK: depth=1, CN=Velmora CA",
        "1678000002,I,VERIFY OK: depth=0, CN=nl-ams-01.velmora.example",
        "1678000002,I,Control Channel: TLSv1.3, cipher TLSv1.3 TLS_AES_256_GCM_SHA384, peer certificate: 2048 bit RSA",
        "1678000002,I,[nl-ams-01.velmora.example] Peer Connection Initiated with [AF_INET]10.20.30.40:1194",
        "1678000003,I,PUSH: Received control message: 'PUSH_REPLY,redirect-gateway def1,dhcp-option DNS 10.8.0.1'",
        "1678000003,I,TUN/TAP device tun0 opened",
        "1678000003,I,net_addr_v4_add: 10.8.0.6/24 dev tun0",
        "1678000003,I,Initialization Sequence Completed",
        "1678000003,W,WARNING: this configuration may cache passwords in memory -- use the auth-nocache option",
    };
    for (const char* line : lines)
        log.onUpdateLog(QString::fromLatin1(line));
    log.resize(620, 400);
    ok &= save(log, dir, QStringLiteral("log-viewer.png"));

    ProgressDlg progress;
    progress.setProgress(0.42f);
    progress.adjustSize();
    ok &= save(progress, dir, QStringLiteral("progress-dialog.png"));

    auto question = CustomMessageBox::create(CustomMessageBox::Kind::Question,
                                             nullptr,
                                             QStringLiteral("Exit"),
                                             QStringLiteral("VPN connection is active. Disconnect and exit?"),
                                             QMessageBox::Yes | QMessageBox::No,
                                             QMessageBox::No);
    ok &= save(*question, dir, QStringLiteral("message-question.png"));

    auto critical = CustomMessageBox::create(CustomMessageBox::Kind::Critical,
                                             nullptr,
                                             QStringLiteral("Tavrin"),
                                             QStringLiteral("Application has no access to network."),
                                             QMessageBox::Ok,
                                             QMessageBox::Ok);
    ok &= save(*critical, dir, QStringLiteral("message-critical.png"));

    // The small pieces together, as they sit on the pages.
    QWidget sheet;
    sheet.setStyleSheet(QStringLiteral("QWidget#sheet { background: white; }"));
    sheet.setObjectName(QStringLiteral("sheet"));
    auto* layout = new QVBoxLayout(&sheet);
    layout->setContentsMargins(0, 0, 0, 12);
    layout->addWidget(new MovableWidget(&sheet));
    auto* search = new SearchEdit(&sheet);
    search->setText(QStringLiteral("Amster"));
    auto* searchRow = new QHBoxLayout;
    searchRow->setContentsMargins(12, 8, 12, 8);
    searchRow->addWidget(search);
    layout->addLayout(searchRow);
    for (const char* code : {"nl", "de", "us", "jp", "zz"}) {
        auto* row = new QHBoxLayout;
        row->setContentsMargins(16, 2, 16, 2);
        auto* flag = new QLabel(&sheet);
        flag->setPixmap(FlagPicture::pixmap(QString::fromLatin1(code)));
        auto* name = new QLabel(QString::fromLatin1(code).toUpper(), &sheet);
        name->setStyleSheet(QStringLiteral("font: 14px \"Arial\"; color: #4a4a4a;"));
        row->addWidget(flag);
        row->addWidget(name, 1);
        layout->addLayout(row);
    }
    auto* spinner = new RotateWidget(QStringLiteral(":/resources/rotator-orange.png"), &sheet);
    spinner->setFixedSize(spinner->size());
    layout->addWidget(spinner, 0, Qt::AlignHCenter);
    sheet.resize(340, 420);
    ok &= save(sheet, dir, QStringLiteral("common-widgets.png"));

    // Every drawn picture side by side, to keep them in one style.
    QWidget icons;
    icons.setObjectName(QStringLiteral("sheet"));
    icons.setStyleSheet(QStringLiteral("QWidget#sheet { background: white; } QLabel { font: 10px; color: #4a4a4a; }"));
    auto* grid = new QGridLayout(&icons);
    grid->setSpacing(10);
    QStringList names;
    QDirIterator it(QStringLiteral(":/resources"), {QStringLiteral("*.svg"), QStringLiteral("*.png")});
    while (it.hasNext())
        names << it.next();
    names.sort();
    for (int i = 0; i < names.size(); ++i) {
        auto* picture = new QLabel(&icons);
        picture->setPixmap(QIcon(names.at(i)).pixmap(QSize(56, 56)));
        picture->setAlignment(Qt::AlignCenter);
        auto* caption = new QLabel(QFileInfo(names.at(i)).completeBaseName(), &icons);
        caption->setAlignment(Qt::AlignCenter);
        grid->addWidget(picture, (i / 6) * 2, i % 6);
        grid->addWidget(caption, (i / 6) * 2 + 1, i % 6);
    }
    icons.adjustSize();
    ok &= save(icons, dir, QStringLiteral("icons.png"));

    return ok ? 0 : 1;
}
