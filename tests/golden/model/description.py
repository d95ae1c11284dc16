"""What a service's file is written with: records, tables, APIs, calls.

README.md tells how a service's file reads. Everything that the model knows of
a service is in its Service; `services` lists them all.
"""
from collections import namedtuple

from positions import List, positions_of
from texts import split, split_runs
from wire import Record

Reply = namedtuple("Reply", "text traces")
Request = namedtuple("Request", "values traces")
Call = namedtuple("Call", "api argument reply")


class Table:
    """A table: the text of its arguments and of its replies, and what its two
    converters trace. A trace is (line number, words); {field} is a field's
    value, {argument} and {text} the whole text, {field_shown} a position.
    `each` is (parser's line number, formatter's, words) of a trace for each
    element of a list, with {number}, {element} and {item}."""

    def __init__(self, name, record, text=None, argument=None, reply=None, parser=None, formatter=None,
                 each=None, separators="&", joined="&", room=1024):
        everything = ", ".join(field.name for field in record.fields)
        self.name = name
        self.record = record
        self.argument = positions_of(record, argument or text or everything)
        self.reply = positions_of(record, reply or text or everything)
        self.parser_trace = parser
        self.formatter_traces = [formatter] if isinstance(formatter, tuple) else formatter or []
        self.each = each
        for position in self.argument if each else []:
            position.traced = isinstance(position, List)
        self.separators = separators
        self.joined = joined
        self.room = room

    @property
    def parser(self):
        return "str2arg_" + self.name

    @property
    def formatter(self):
        return "arg2str_" + self.name

    def read(self, argument):
        """An argument's text: the values to be sent, and the lines traced."""
        runs = len(self.separators) > 1
        parts = split_runs(argument, self.separators) if runs else split(argument, self.separators)
        values = {}
        for position, part in zip(self.argument, parts + [""] * len(self.argument)):
            position.read(part, values)
        traces = []
        if self.each:
            place = next(place for place, position in enumerate(self.argument) if isinstance(position, List))
            items = self.argument[place].items(parts[place])
            elements = self.argument[place].elements(values)
            for number, item in enumerate(items):
                traces.append(self.line(self.parser, self.each[0], self.each[2],
                                        {"number": number, "element": elements[number], "item": item}))
        if self.parser_trace:
            whole = self.record.decode(self.record.encode(values))
            traces.append(self.line(self.parser, *self.parser_trace, self.words(whole, argument=argument)))
        return Request(values, traces)

    def show(self, values):
        """A reply's text, and the lines traced."""
        text = self.joined.join(position.shown(values) for position in self.reply)[: self.room - 1]
        traces = []
        if self.each:
            position = next(position for position in self.reply if isinstance(position, List))
            so_far = ""
            for number, element in enumerate(position.elements(values)):
                so_far += "%d," % element
                traces.append(self.line(self.formatter, self.each[1], self.each[2],
                                        {"number": number, "element": element, "item": so_far}))
        for trace in self.formatter_traces:
            traces.append(self.line(self.formatter, *trace, self.words(values, text=text)))
        return Reply(text, traces)

    def words(self, values, **others):
        """What may stand between braces in a trace."""
        words = {position.field.name + "_shown": position.shown(values) for position in self.reply}
        for name, value in values.items():
            words[name] = value.split("\0")[0] if isinstance(value, str) else value
        return {**words, **others}

    @staticmethod
    def line(function, number, words, values):
        return "[%s: %d]%s." % (function, number, words.format_map(values))


class Api:
    """A stub, and where `table` is set the API that Lua reaches it by."""

    def __init__(self, service, name, procedure, table, record, sends, status, through_record):
        self.service = service
        self.name = name
        self.procedure = procedure
        self.table = table
        self.request = record if sends else None
        self.reply = None if status else record
        self.through_record = through_record

    @property
    def formatter(self):
        """The function that makes the reply's text."""
        return self.table.formatter if self.reply or self.through_record else "int2str"


class Service:
    """A service: its program, its place when the library is opened, the names
    of its registration and its clients' functions; then what is added."""

    def __init__(self, name, program, opened, registration=None):
        self.name = name
        self.program = program
        self.opened = opened
        self.registration = registration or name
        self.records = {}
        self.tables = {}
        self.apis = []
        self.stubs = []
        self.nested = []
        self.calls = []

    def record(self, name, notation):
        self.records[name] = Record(name, notation)

    def table(self, name, record, text=None, **rest):
        self.tables[name] = Table(name, self.records[record], text, **rest)

    def register(self, text):
        """APIs in the order of their registration, a line each table:

            vrrp_ssconf get 1, getn 2, set 3: vrrp_ssconf

        that is the stubs' name, each operation with its procedure, and the
        table. `set` and other verbs that end in `-> status` reply with an int,
        `-> record` is a status that the record's formatter shows, `<- void`
        sends nothing.
        """
        for line in text.strip().splitlines():
            stubs, _, table = line.rpartition(":")
            name, _, operations = stubs.strip().partition(" ")
            for operation in operations.split(","):
                table_of_stub = self.tables[table.strip()]
                self.apis.append(self.stub(name, operation, table_of_stub, table_of_stub.record))

    def keep_unregistered(self, text):
        """Stubs that Lua cannot reach, a line each record: name, operations, record."""
        for line in text.strip().splitlines():
            stubs, _, record = line.rpartition(":")
            name, _, operations = stubs.strip().partition(" ")
            for operation in operations.split(","):
                self.stub(name, operation, None, self.records[record.strip()])

    def stub(self, name, operation, table, record):
        verb, procedure, *rest = operation.split()
        how = " ".join(rest)
        if how not in ("", "-> status", "-> record", "<- void"):
            raise ValueError("%s %s: expected -> status, -> record or <- void, found %s" % (name, verb, how))
        api = Api(self, "oltmib_%s_%s_1" % (name, verb), int(procedure), table, record, how != "<- void",
                  verb == "set" or how == "-> status", how == "-> record")
        self.stubs.append(api)
        return api

    def keep_types(self, names):
        """Types with a routine of their own that are no table's record."""
        self.nested += names.split()

    def call(self, name, argument, /, **reply):
        """A call worth a look: an argument, and what the daemon replies. The
        reply's fields are given by name, a set's status as `status`."""
        api = next(api for api in self.apis if api.name == name)
        self.calls.append(Call(api, argument, reply))
