// The daemon's check of an OpenVPN configuration. Every file it accepts is read again here the
// way OpenVPN 2.6 reads it (fgets() into 256 bytes, the byte order mark on line 1, parse_line(),
// the leading "--", inline <tag> blocks closed by a line starting with </tag> after blanks),
// written from OpenVPN's reading code independently of the check: no line may then give a
// directive the check does not allow, nor an error that would stop OpenVPN.
#include "FuzzCheck.h"
#include "OpenVpnConfigCheck.h"

#include <cctype>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr size_t OptionLineSize = 256;
constexpr int MaxParms = 16;

// fgets() over the file: chunks of at most OptionLineSize - 1 bytes, each ending at a line feed.
class Lines
{
public:
    explicit Lines(const std::string& file)
        : m_file(file)
    { }
    bool next(std::string& line)
    {
        if (m_at >= m_file.size())
            return false;
        size_t end = m_at;
        while (end < m_file.size() && end - m_at < OptionLineSize - 1 && m_file[end] != '\n')
            ++end;
        if (end < m_file.size() && end - m_at < OptionLineSize - 1 && m_file[end] == '\n')
            ++end;
        line = m_file.substr(m_at, end - m_at);
        m_at = end;
        // A C string: whatever follows a zero byte is not seen.
        line = std::string(line.c_str());
        return true;
    }
    bool atEnd() const { return m_at >= m_file.size(); }

private:
    const std::string& m_file;
    size_t m_at = 0;
};

bool space(char c)
{
    return c == '\0' || std::isspace(static_cast<unsigned char>(c));
}

// OpenVPN's parse_line(), written out as it reads: false where OpenVPN stops with an error.
bool parseLine(const std::string& text, std::vector<std::string>& p)
{
    enum { Initial, Quoted, Unquoted, Done, SingleQuoted } state = Initial;
    bool backslash = false;
    std::string parm;
    const char* c = text.c_str();
    do {
        const char in = *c;
        char out = 0;
        if (!backslash && in == '\\' && state != SingleQuoted) {
            backslash = true;
        } else {
            if (state == Initial) {
                if (!space(in)) {
                    if (in == ';' || in == '#')
                        break;
                    if (!backslash && in == '"')
                        state = Quoted;
                    else if (!backslash && in == '\'')
                        state = SingleQuoted;
                    else {
                        out = in;
                        state = Unquoted;
                    }
                }
            } else if (state == Unquoted) {
                if (!backslash && space(in))
                    state = Done;
                else
                    out = in;
            } else if (state == Quoted) {
                if (!backslash && in == '"')
                    state = Done;
                else
                    out = in;
            } else if (state == SingleQuoted) {
                if (in == '\'')
                    state = Done;
                else
                    out = in;
            }
            if (state == Done) {
                p.push_back(parm);
                state = Initial;
                parm.clear();
            }
            if (backslash && out && !(out == '\\' || out == '"' || space(out)))
                return false;
            backslash = false;
        }
        if (out) {
            if (parm.size() >= OptionLineSize)
                return false;
            parm += out;
        }
        if (int(p.size()) >= MaxParms)
            break;
    } while (*c++ != '\0');
    return state == Initial;
}

void reread(const std::string& file)
{
    Lines lines(file);
    std::string line;
    for (int number = 1; lines.next(line); ++number) {
        // Tried on OpenVPN 2.6: 254 bytes and the line feed are read; 255 bytes followed by more
        // are "Maximum option line length (256) exceeded"; 255 bytes ending the file are read.
        FUZZ_CHECK(line.size() != OptionLineSize - 1 || line.back() == '\n' || lines.atEnd(),
                   QStringLiteral("line %1 is too long for OpenVPN").arg(number));
        const size_t offset = number == 1 && line.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
        std::vector<std::string> p;
        FUZZ_CHECK(parseLine(line.substr(offset), p), QStringLiteral("OpenVPN cannot read line %1").arg(number));
        if (p.empty())
            continue;
        if (p[0].size() >= 3 && p[0].compare(0, 2, "--") == 0)
            p[0].erase(0, 2);
        const std::string& name = p[0];
        if (p.size() == 1 && name.size() >= 2 && name.front() == '<' && name.back() == '>') {
            const std::string tag = name.substr(1, name.size() - 2);
            FUZZ_CHECK(OpenVpnConfigCheck::allows(QString::fromStdString(tag), true),
                       QStringLiteral("line %1: block <%2>").arg(number).arg(QString::fromStdString(tag)));
            const std::string close = "</" + tag + ">";
            bool closed = false;
            while (!closed && lines.next(line)) {
                ++number;
                size_t blanks = 0;
                while (blanks < line.size() && std::isspace(static_cast<unsigned char>(line[blanks])))
                    ++blanks;
                closed = line.compare(blanks, close.size(), close) == 0;
            }
            FUZZ_CHECK(closed, QStringLiteral("block <%1> is not closed").arg(QString::fromStdString(tag)));
            continue;
        }
        FUZZ_CHECK(OpenVpnConfigCheck::allows(QString::fromStdString(name), false),
                   QStringLiteral("line %1: directive \"%2\"").arg(number).arg(QString::fromStdString(name)));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray config = bytes(data, size);
    OpenVpnConfigCheck check;
    if (check.check(config))
        reread(config.toStdString());
    return 0;
}
