#include "Clock.h"

#include <memory>

namespace {
std::unique_ptr<Clock>& instanceSlot()
{
    static std::unique_ptr<Clock> clock;
    return clock;
}
} // namespace

QDateTime Clock::now() const
{
    return QDateTime::currentDateTime();
}

QDateTime Clock::currentDateTime()
{
    const auto& clock = instanceSlot();
    return clock ? clock->now() : QDateTime::currentDateTime();
}

QDateTime Clock::currentDateTimeUtc()
{
    return currentDateTime().toUTC();
}

void Clock::setInstance(Clock* clock)
{
    instanceSlot().reset(clock);
}
