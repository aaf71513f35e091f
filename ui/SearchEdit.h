#pragma once

#include <QLineEdit>

class QToolButton;

// The location search field: a line edit with a clear button inside its trailing (right, or left when
// laid out right to left) edge.
class SearchEdit : public QLineEdit
{
    Q_OBJECT

public:
    explicit SearchEdit(QWidget* parent = nullptr);

    QToolButton* clearButton() const { return m_clearButton; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void updateClearButton(const QString& text);
    void placeClearButton();

    QToolButton* m_clearButton;
};
