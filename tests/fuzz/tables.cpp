// For every table: text -> record -> bytes -> record -> text gives a text that,
// taken as the argument, gives itself again.
//
// Input: API (2), text.
#include "tests/fuzz/fuzz.h"

namespace
{
std::string through_the_wire(const Record& record, const void* object)
{
    std::vector<uint32_t> units(record.units);
    std::string sent(static_cast<const char*>(object), record.size), received(record.size, '\0');
    for (xdr_op direction : {XDR_ENCODE, XDR_DECODE}) {
        XDR xdrs;
        xdrmem_create(&xdrs, reinterpret_cast<char*>(units.data()), BYTES_PER_XDR_UNIT * record.units, direction);
        EXPECT(xdr_record(&xdrs, record, direction == XDR_ENCODE ? &sent[0] : &received[0]),
               "a record to pass its own units", "a refusal of %s", record.name);
    }
    EXPECT(sent == received, "the record that was sent", "another %s", record.name);
    return received;
}

std::string pass(const Api& api, const std::string& text)
{
    std::string record = through_the_wire(*api.request, api.parser->str2arg(exact_text(text).data()));
    return api.formatter->ret2str(&record[0]);
}

// Tables whose text loses something on purpose.
bool gives_itself(const TextForm& form, const std::string& record, const std::string& text)
{
    if (text.size() + 1 >= form.buffer || form.delimiters[0]) // cut; runs of delimiters collapse
        return false;
    for (const Position field : form) {
        const char* at = &record[field.offset];
        if (field.text == Text::RawMac || field.use == Use::InputOnly || field.use == Use::OutputOnly)
            return false; // another text in than out, or other positions
        if (field.text == Text::List && field.kind == Kind::Int && field.count * sizeof "-2147483648" > list_size)
            return false;
        if (field.text == Text::List && field.kind == Kind::Char) {
            std::string list;
            for (unsigned i = 0; i < field.count; i++)
                list += std::to_string(at[i]) + ",";
            if (list.size() > list_size) // cut when it is read
                return false;
        }
        if (field.text == Text::Unsigned && sizeof(long) == 4) // atoi saturates there
            return false;
    }
    return true;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Input input(data, size);
    const Api& api = choose_api(input);
    rpclib_dbg = 0;
    if (!api.request || api.reply != api.request || !api.output() || api.output()->record != api.request)
        return 0;
    const std::string record = through_the_wire(*api.request, api.parser->str2arg(exact_text(input.rest()).data()));
    std::string copy = record;
    const std::string text = api.formatter->ret2str(&copy[0]);
    if (!gives_itself(*api.output(), record, text))
        return 0;
    const std::string again = pass(api, text);
    EXPECT(again == text, "a text that gives itself", "\"%s\" from \"%s\" of %s", again.c_str(), text.c_str(),
           api.name);
    return 0;
}
