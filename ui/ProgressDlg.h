#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;
class QPushButton;

// Shown while an update package downloads; "Cancel" (or closing it) asks to stop the download.
class ProgressDlg : public QDialog
{
    Q_OBJECT

public:
    explicit ProgressDlg(QWidget* parent = nullptr);

    int value() const;

public slots:
    void setProgress(float fraction);
    void reject() override;

signals:
    void cancel();

protected:
    void changeEvent(QEvent* event) override;

private:
    void retranslate();

    QLabel* m_label;
    QProgressBar* m_bar;
    QPushButton* m_cancelButton;
};
