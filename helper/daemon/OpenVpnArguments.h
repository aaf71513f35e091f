#pragma once

#include <QString>

// Checks the argument string a client asks OpenVPN to be started with. Only the one shape the
// client builds passes:
//   --config "PATH" --management 127.0.0.1 PORT --management-query-passwords
//   --script-security 2 --up SCRIPT --down SCRIPT
// with blanks of any number between the words and SCRIPT the fixed resolver script.
class OpenVpnArguments
{
public:
    static constexpr const char* ResolverScript = "/usr/share/tavrin/script/update-resolv-conf.sh";

    // False with a reason in error() when the string has any other shape.
    bool parse(const QString& text);

    QString configPath() const { return m_configPath; }
    quint16 managementPort() const { return m_managementPort; }
    QString error() const { return m_error; }

private:
    bool fail(const QString& why);

    QString m_configPath;
    quint16 m_managementPort = 0;
    QString m_error;
};
