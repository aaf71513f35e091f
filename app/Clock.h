#pragma once

#include <QDateTime>

// The program's source of "now". Tests replace it to move time at will.
class Clock
{
public:
    virtual ~Clock() = default;

    static QDateTime currentDateTime();
    static QDateTime currentDateTimeUtc();

    // Takes ownership; nullptr restores the system clock.
    static void setInstance(Clock* clock);

protected:
    virtual QDateTime now() const;
};

// A clock that stays where a test puts it.
class MockClock : public Clock
{
public:
    explicit MockClock(const QDateTime& start)
        : m_now(start)
    { }
    void set(const QDateTime& when) { m_now = when; }
    void advanceSecs(qint64 secs) { m_now = m_now.addSecs(secs); }

protected:
    QDateTime now() const override { return m_now; }

private:
    QDateTime m_now;
};
