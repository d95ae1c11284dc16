// The language of faults, see faults.h.
#include "sim/faults.h"

#include <arpa/inet.h>
#include <cstring>
#include <iterator>

const char faults_help[] = "  fault TARGET [count=K] [after=K] EFFECT...\n"
                           "      TARGET is *, a service (devinfo), a program (50002), a procedure (50002:3)\n"
                           "      or an API (oltmib_devinfo_get_1); the first fault that matches a call happens.\n"
                           "      after=K lets K calls pass, count=K ends the fault after K calls. EFFECT is any of\n"
                           "        delay MS         the reply is sent that much later, other calls go on\n"
                           "        drop             no reply\n"
                           "        double           the reply is sent twice\n"
                           "        truncate BYTES   only so much of the reply's body\n"
                           "        cut BYTES        only so much of the reply, its header included\n"
                           "        random BYTES     a body of random bytes; 0 is as many as the true one has\n"
                           "        raw HEX          this datagram in place of the reply; XID is the call's own\n"
                           "        forge            a stranger answers before, with the right xid\n"
                           "        stranger HEX     a stranger sends this datagram before; - is an empty one\n"
                           "        error STATUS     prog_unavail, prog_mismatch, proc_unavail, garbage_args,\n"
                           "                         system_err, denied or rpc_mismatch instead of a result\n";

namespace
{
struct Status {
    const char* name;
    Refusal refusal;
};

constexpr Status statuses[] = {
    {"prog_unavail", Refusal::ProgUnavail}, {"prog_mismatch", Refusal::ProgMismatch},
    {"proc_unavail", Refusal::ProcUnavail}, {"garbage_args", Refusal::GarbageArgs},
    {"system_err", Refusal::SystemErr},     {"denied", Refusal::Denied},
    {"rpc_mismatch", Refusal::RpcMismatch},
};

std::optional<long> parse_number(const std::string& text)
{
    if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos)
        return {};
    return std::stol(text);
}

std::optional<Datagram> parse_datagram(const std::string& text)
{
    if (text == "-")
        return Datagram{};
    size_t digits = 0;
    for (size_t at = 0; at < text.size();) {
        if (text.compare(at, 3, "XID") == 0)
            at += 3, digits += 8;
        else if (isxdigit(static_cast<unsigned char>(text[at])))
            at++, digits++;
        else
            return {};
    }
    if (digits % 2)
        return {};
    return Datagram{text};
}

// Takes the words of a fault one by one and notes the first error.
class Words
{
  public:
    Words(const std::vector<std::string>& words, std::string& error) : words(words), error(error) {}

    bool more() const { return error.empty() && at < words.size(); }
    const std::string& take() { return words[at++]; }

    void expected(const std::string& what, const std::string& found)
    {
        if (error.empty())
            error = "expected " + what + ", found " + (found.empty() ? "nothing" : "'" + found + "'");
    }
    std::string next() { return at < words.size() ? words[at++] : ""; }
    long number(const std::string& of, const std::string& text)
    {
        const std::optional<long> value = parse_number(text);
        if (!value)
            expected("a number for " + of, text);
        return value.value_or(0);
    }
    Datagram datagram(const std::string& of)
    {
        const std::string text = next();
        const std::optional<Datagram> value = parse_datagram(text);
        if (text.empty() || !value)
            expected("pairs of hex digits, XID or - for " + of, text);
        return value.value_or(Datagram{});
    }

  private:
    const std::vector<std::string>& words;
    std::string& error;
    size_t at = 0;
};

Refusal parse_refusal(Words& words)
{
    const std::string name = words.next();
    for (const Status& status : statuses)
        if (name == status.name)
            return status.refusal;
    words.expected("a status for error", name);
    return Refusal::None;
}

void parse_effect(Fault& fault, const std::string& word, Words& words)
{
    if (word.compare(0, 6, "count=") == 0)
        fault.count = words.number("count", word.substr(6));
    else if (word.compare(0, 6, "after=") == 0)
        fault.after = words.number("after", word.substr(6));
    else if (word == "delay")
        fault.delay = words.number(word, words.next());
    else if (word == "drop")
        fault.drop = true;
    else if (word == "double")
        fault.twice = true;
    else if (word == "forge")
        fault.forge = true;
    else if (word == "truncate")
        fault.truncate = words.number(word, words.next());
    else if (word == "cut")
        fault.cut = words.number(word, words.next());
    else if (word == "random")
        fault.random = words.number(word, words.next());
    else if (word == "raw")
        fault.raw = words.datagram(word);
    else if (word == "stranger")
        fault.strangers.push_back(words.datagram(word));
    else if (word == "error")
        fault.refusal = parse_refusal(words);
    else
        words.expected("an effect", word);
}
} // namespace

std::string Datagram::bytes(uint32_t xid) const
{
    std::string found;
    for (size_t at = 0; at < text.size();) {
        if (text.compare(at, 3, "XID") == 0) {
            const uint32_t unit = htonl(xid);
            found.append(reinterpret_cast<const char*>(&unit), sizeof unit);
            at += 3;
        } else {
            found += static_cast<char>(std::stoi(text.substr(at, 2), nullptr, 16));
            at += 2;
        }
    }
    return found;
}

std::optional<Target> parse_target(const std::string& text)
{
    if (text == "*")
        return Target{};
    const size_t colon = text.find(':');
    const std::optional<long> program = parse_number(text.substr(0, colon));
    for (const Service* service : all_services) {
        if (text == service->name)
            return Target{service->program, {}};
        if (program && static_cast<rpcprog_t>(*program) == service->program) {
            if (colon == std::string::npos)
                return Target{service->program, {}};
            if (const std::optional<long> procedure = parse_number(text.substr(colon + 1)))
                return Target{service->program, static_cast<rpcproc_t>(*procedure)};
        }
        for (const Api& api : *service)
            if (text == api.name)
                return Target{service->program, api.procedure};
    }
    return {};
}

std::optional<Fault> parse_fault(const std::vector<std::string>& list, std::string& error)
{
    Words words(list, error);
    Fault fault;
    const std::string target = words.next();
    if (const std::optional<Target> found = parse_target(target))
        fault.target = *found;
    else
        words.expected("*, a service, a program, PROGRAM:PROCEDURE or an API", target);
    bool effects = false;
    while (words.more()) {
        const std::string& word = words.take();
        effects |= word.find('=') == std::string::npos;
        parse_effect(fault, word, words);
    }
    if (!effects)
        words.expected("an effect", "");
    if (!error.empty())
        return {};
    return fault;
}
