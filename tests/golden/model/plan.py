"""Which vectors an API has, and how many: short ones to be checked by hand,
the calls that a service's file asks for, edges, random ones, and mixed ones, which
none of the files here holds: `compare` makes them by the thousand.

SEED and COUNTS stand here and nowhere else: the vectors in the tree are made
with them.
"""
from positions import Counted
from services import SERVICES
from texts import HostsDiffer
from values import APART, DIGITS, LENGTHS, MACS, REALS, SORT_OF_KIND, SORTS, Dice, Lengths
from vectors import vector_of, written

SEED = 20261121
COUNTS = {"readable": 1, "edges": 2, "random": 1, "mixed": 0}  # an API

STATUSES = [0, -1, 1, 2**31 - 1, -(2**31)]


def sorts_of(record, table):
    """The sort of values of each field of a reply."""
    sorts = {field.name: SORT_OF_KIND[field.kind] for field in record.fields}
    for position in table.reply:
        if position.field.kind == "char" or position.field.count > 1:
            sorts[position.field.name] = SORTS[type(position)]
        if isinstance(position, Counted):
            sorts[position.count] = Lengths()
    return sorts


def reply_of(api, units_of):
    """A reply's units; units_of(sort, field, number) makes a field's."""
    if not api.reply:
        return None
    sorts = sorts_of(api.reply, api.table)
    units = []
    for number, field in enumerate(api.reply.fields):
        units += units_of(sorts[field.name], field, number)
    return units


def family(api):
    """The APIs of the same table."""
    return [each for each in api.service.apis if each.table is api.table]


def joined(table, parts):
    """An argument. Where an empty position vanishes, the one behind it is read
    as another sort: what hosts read differently there is left out."""
    if table.separators != "&":
        parts = ["7" if part in APART or part.startswith("0x") else part for part in parts]
    return table.joined.join(parts)


def plain(api, number):
    """By turns: everything and it comes back, the key alone, nothing at all.
    What replies with a status begins with everything."""
    table = api.table
    turn = number + (family(api).index(api) if api.reply else 0)
    full = [SORTS[type(position)].plain(position, number + 1) for number, position in enumerate(table.argument)]
    argument = joined(table, [full, full[:1], []][turn % 3])
    if not api.reply:
        return argument, [STATUSES[turn % 3]]
    if turn % 3 == 0 and api.request:
        return argument, api.request.encode(table.read(argument).values)
    return argument, reply_of(api, lambda sort, field, number: sort.plain_units(field, number + 1))


def edge(api, turn):
    """The edges that are this turn's; by turns as many positions as there are,
    fewer, and too many."""
    table = api.table
    parts = [SORTS[type(position)].edge(position, turn + number) for number, position in enumerate(table.argument)]
    parts = [parts, parts[: turn % len(parts)], parts + ["", "surplus", "7"]][turn // 2 % 3]
    reply = reply_of(api, lambda sort, field, number: sort.edge_units(field, turn + number))
    return joined(table, parts), reply or [STATUSES[turn % len(STATUSES)]]


def scarce(api):
    """Every edge of the sorts that few tables have, nothing beside it; the
    first table of a service that has such a sort shows them."""
    table = api.table
    sorts = [SORTS[type(position)] for position in table.argument]
    firsts = [next(each for each in api.service.apis if each.reply and type(position) in map(type, each.table.argument))
              for position, sort in zip(table.argument, sorts) if sort.scarce and api.reply]
    if api not in firsts:
        return
    for turn in range(max(map(len, (DIGITS, LENGTHS, MACS, REALS)))):
        argument = joined(table, [sort.edge(position, turn + number) if sort.scarce else ""
                                  for number, (sort, position) in enumerate(zip(sorts, table.argument))])
        yield argument, reply_of(api, lambda sort, field, number: sort.edge_units(field, turn + number)
                                 if sort.scarce else [0] * api.reply.size_of(field))


def at_random(api, dice):
    table = api.table
    parts = [SORTS[type(position)].random(position, dice) for position in table.argument]
    if dice.percent(30):
        parts = parts[: dice.below(len(parts))] if dice.percent(60) else parts + ["surplus"] * dice.between(1, 30)
    reply = reply_of(api, lambda sort, field, number: sort.random_units(field, dice))
    return joined(table, parts), reply or [dice.between(-(2**31), 2**31 - 1)]


def some(dice, plain_one, edge_one, random_one):
    """A plain value, an edge or a random one."""
    which = dice.below(3)
    if which == 2:
        return random_one()
    return [plain_one, edge_one][which](dice.below(1000))


def disturbed(argument, separators, dice):
    """An argument after some edits that know where its positions are: one is left out,
    doubled, exchanged with another or joined to the next, or a character is."""
    for _ in range(dice.below(4)):
        parts = argument.split(separators[0])
        at, other = dice.below(len(parts)), dice.below(len(parts))
        edit = dice.below(7)
        if edit == 0:
            parts[at:at + 1] = []
        elif edit == 1:
            parts[at:at] = [parts[other]]
        elif edit == 2:
            parts[at], parts[other] = parts[other], parts[at]
        elif edit == 3:
            parts[at:at + 2] = ["".join(parts[at:at + 2])]
        elif edit == 4:
            parts[at] = parts[at][: dice.below(len(parts[at]) + 1)]
        else:
            place = dice.below(len(parts[at]) + 1)
            added = dice.one_of(separators) if edit == 5 else chr(dice.between(1, 255))
            parts[at] = parts[at][:place] + added + parts[at][place:]
        argument = separators[0].join(parts)
    return argument


def mixed(api, dice):
    """Values of every sort beside one another, and an argument whose positions moved.
    Numbers beyond an int come about as they will: for hosts whose long is wide."""
    table = api.table
    parts = []
    for position in table.argument:
        position = dice.one_of(table.argument) if dice.percent(5) else position
        sort = SORTS[type(position)]
        parts.append(some(dice, lambda number: sort.plain(position, number), lambda turn: sort.edge(position, turn),
                          lambda: sort.random(position, dice)))
    argument = joined(table, parts)
    if dice.percent(50):
        argument = disturbed(argument, table.separators, dice)
    reply = reply_of(api, lambda sort, field, number: some(
        dice, lambda number: sort.plain_units(field, number), lambda turn: sort.edge_units(field, turn),
        lambda: sort.random_units(field, dice)))
    return argument, reply or [dice.between(-(2**31), 2**31 - 1)]


def asked_for(call):
    """A call that a service's file asks for."""
    if not call.api.reply:
        return call.argument, [call.reply["status"]]
    unknown = set(call.reply) - set(call.api.reply.kind)
    if unknown:
        raise ValueError("%s: expected fields of the reply, found %s" % (call.api.name, ", ".join(sorted(unknown))))
    return call.argument, call.api.reply.encode(call.reply)


def vectors(service, seed, counts, tables=None):
    """A service's vectors, of all tables or these."""
    for api in service.apis:
        if tables and api.table.name not in tables:
            continue
        # which edges are an API's stays when others come
        turn = 31 * service.opened + 17 * api.procedure
        for number in range(counts["readable"]):
            yield vector_of(api, *plain(api, number))
        for call in service.calls:
            if call.api is api:
                yield vector_of(api, *asked_for(call))
        for arguments in scarce(api) if counts["edges"] else ():
            yield vector_of(api, *arguments)
        for number in range(counts["edges"]):
            yield vector_of(api, *edge(api, turn + 101 * number))
        for sort, make in (("random", at_random), ("mixed", mixed)):
            for number in range(counts[sort]):
                dice = Dice("%s %s %s%d" % (seed, api.name, "mixed " if make is mixed else "", number))
                while True:
                    try:
                        yield vector_of(api, *make(api, dice))
                        break
                    except HostsDiffer:
                        continue


def files(seed, counts, tables=None):
    """The vector files: their names and lines."""
    for service in SERVICES:
        blocks = ["# What the APIs of %s send and what comes of its replies; made by model/make, never edited."
                  % service.name]
        for vector in vectors(service, seed, counts, tables):
            blocks += [""] + written(vector)
        if len(blocks) > 1:
            yield "vectors/%d.txt" % service.program, blocks
