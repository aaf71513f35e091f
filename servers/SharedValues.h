#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringView>

// Values made once per distinct source text and then shared (implicitly) by every record that takes them: the
// logins, flags and port lists of a long server list repeat from server to server. The source texts are kept
// apart from the values so that the keys can be views of them.
template <typename T>
class SharedValues
{
public:
    template <typename Make>
    T value(QStringView source, Make make)
    {
        auto found = m_values.constFind(source);
        if (found == m_values.constEnd()) {
            m_sources.append(source.toString());
            found = m_values.insert(QStringView(m_sources.constLast()), make(source));
        }
        return found.value();
    }

private:
    QList<QString> m_sources;
    QHash<QStringView, T> m_values;
};
