#!/usr/bin/env python3
"""The model's own tests: expectations worked out by hand, and that the vectors
hold what they are for. Each module's doctests run with them."""
import doctest
import os
import re
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
import description
import plan
import positions
import texts
import vectors
import values
import wire
from services import SERVICES

HERE = os.path.dirname(os.path.abspath(__file__))
APIS = {api.name: api for service in SERVICES for api in service.apis}


def load_tests(_loader, tests, _pattern):
    for module in (texts, wire, positions, vectors):
        tests.addTests(doctest.DocTestSuite(module))
    return tests


def vector(name, argument, reply):
    return vectors.vector_of(APIS[name], argument, reply)


def made(seed=plan.SEED):
    return [each for service in SERVICES for each in plan.vectors(service, seed, plan.COUNTS)]


class WorkedOutByHand(unittest.TestCase):
    maxDiff = None

    def test_the_labelled_address_in_the_trace_is_the_interface(self):
        found = vector("oltmib_vrrp_ssconf_set_1", "7&vlan10&192.0.2.1&&&&&&&&&1&2&surplus", [-3])
        self.assertEqual(found.request, [7] + [ord(c) for c in "vlan10"] + [0] * 34 + [ord(c) for c in "192.0.2.1"] +
                         [0] * 23 + [0] * 4 + [0] * 40 + [0] * 2 + [0] * 32 + [1, 2])
        self.assertEqual(found.text, "-3")
        self.assertEqual(found.traces, ["[str2arg_vrrp_ssconf: 30]vrid 7, ifname vlan10, ip vlan10, oper 1."])

    def test_devinfo_copies_an_address_and_shows_one_and_leaves_out_oper(self):
        reply = [111, 0] + [0] * 30 + [0] * 32 + [0, 17, 34, -86, 187, 204] + [0] * 96 + [5, -1] + \
            [104] + [0] * 63 + [7, 8]
        found = vector("oltmib_devinfo_get_1", "&&00-11-22", reply)
        self.assertEqual(found.request, [0] * 64 + [48, 48, 45, 49, 49, 0] + [0] * 164)
        self.assertEqual(found.text, "o&&00-11-22-AA-BB-CC&&&&5&4294967295&h&8")
        self.assertEqual(found.traces, ["[str2arg_devinfo: 28]save config 0, hostname , oper 0.",
                                        "[arg2str_devinfo: 37]str: o&&00-11-22-AA-BB-CC&&&&5&4294967295&h&8."])

    def test_the_fourth_number_of_the_port_states_text_is_the_seventh_on_the_wire(self):
        reply = [3] + [0] * 40 + list(range(1, 25)) + [0] * 32 + [5, 6]
        found = vector("oltmib_d1x_pst_get_1", "3&&1&2&3&7&&8&9", reply)
        self.assertEqual(found.request, [3] + [0] * 40 + [1, 2, 3, 0, 0, 0, 7] + [0] * 17 + [0] * 32 + [8, 9])
        self.assertEqual(found.text, "3&&1&2&3&7&&5&6")

    def test_one_position_of_portinfo_fills_two_fields(self):
        found = vector("oltmib_portinfo_set_1", "1&ge1&&&&5&6", [0])
        self.assertEqual(found.request, [1, 103, 101, 49] + [0] * 29 + [0] * 80 + [0, 0] + [0] * 64 + [5, 5, 6] +
                         [0] * 128 + [0] * 13 + [0] * 32 + [0, 0])

    def test_counters_are_shown_in_their_own_order_and_never_read(self):
        counters = [unit for number in range(54) for unit in (number, 0)]
        counters[18:20] = [-1, -1]  # counter9
        found = vector("oltmib_portstat_get_1", "3&0&&91&92&93&94&95&96&97&98&99&90&note&1",
                       [3, 0] + [0] * 32 + counters + [0] * 32 + [0, 0])
        self.assertEqual(found.request, [3, 0] + [0] * 32 + [0] * 108 + [110, 111, 116, 101] + [0] * 28 + [1, 0])
        text = "3&0&&18446744073709551615&6&13&27&26&29&35&37&40&42&&0&0"
        self.assertEqual(found.text, text)
        self.assertEqual(found.traces, [
            "[str2arg_portstat: 136]str 3&0&&91&92&93&94&95&96&97&98&99&90&note&1, ifx 3, oper 1.",
            "[arg2str_portstat: 173]ifx 3, name , res 0, str " + text + "."])

    def test_rates_are_signed(self):
        reply = [3, 0] + [0] * 32 + [-1, -1, 2, 1, 0, -(2**31)] + [0] * 6 + [0] * 34
        found = vector("oltmib_portrate_get_1", "", reply)
        self.assertEqual(found.text, "3&0&&-1&4294967298&-9223372036854775808&0&0&0&&0&0")

    def test_only_a_reply_of_the_access_list_counts(self):
        reply = [0] * 70 + [1, 2, 3, 4, 5] + [0] * 70 + [6, 7] + [0] * (20 + 80 + 20 + 80 + 20) + \
            [8, 9, 0, -(2**31)] + [0] * 32 + [10, 11]
        found = vector("oltmib_acl_set_1", "web&1&2&3&4&5&&6&7&&&&&&&&8&9&t&10&11", [0])
        self.assertEqual(found.request[-38:], [8, 9, 0, 0, 116] + [0] * 31 + [10, 11])
        found = vector("oltmib_acl_get_1", "", reply)
        self.assertEqual(found.text, "&1&2&3&4&5&&6&7&&&&&&&&8&9&9223372036854775808&&10&11")

    def test_a_list_traces_each_item_and_each_element_so_far(self):
        found = vector("oltmib_dscp2queue_get_1", "1,,300", [5, 6] + [0] * 62 + [0] * 34)
        self.assertEqual(found.request, [1, 0, 44] + [0] * 61 + [0] * 34)
        self.assertEqual(found.text, "5,6" + ",0" * 62 + "&&0&0")
        self.assertEqual(found.traces[:5], ["[str2arg_dscp2queueinfo: 602]dscp 0, queue 1(1).",
                                            "[str2arg_dscp2queueinfo: 602]dscp 1, queue 0().",
                                            "[str2arg_dscp2queueinfo: 602]dscp 2, queue 44(300).",
                                            "[arg2str_dscp2queueinfo: 614]dscp 0, queue 5(5,).",
                                            "[arg2str_dscp2queueinfo: 614]dscp 1, queue 6(5,6,)."])
        self.assertEqual(len(found.traces), 3 + 64)
        self.assertEqual(len(vector("oltmib_dscp2queue_set_1", "", [0]).traces), 1)

    def test_a_list_is_cut_before_it_is_taken_apart(self):
        found = vector("oltmib_dscp2cos_set_1", ",".join(["00063"] * 64), [0])
        self.assertEqual(found.request[:64], [63] * 42 + [0] * 22)

    def test_alarms_are_counted_and_go_on_behind_their_array(self):
        reply = [0] * (33 + 1 + 96 + 8 + 32) + [0, 50] + [1] * 32 + [65] * 18 + [0] * 14 + [0] * 192 + [0, 0]
        found = vector("oltmib_opticaldetail_get_1", "3" + "&" * 16 + "0a0b0", reply)
        self.assertEqual(found.request[171:177], [2, 10, 11, 0, 0, 0])
        alarm = "01" * 32 + "41" * 17 + "4"
        self.assertEqual(found.text, "0&&0&&&&0&0&0&0&0&0&0&0&&0&" + alarm + "&" + "A" * 18 + "&&&&&&&0&0")
        self.assertEqual(found.traces[0], "[arg2str_opticaldetail: 1109]alarmstr: " + alarm + ", len 50.")

    def test_the_ring_instances_text_has_its_own_order(self):
        found = vector("oltmib_erpsinst_get_1", "A&5&B", [65] + [0] * 31 + [66] + [0] * 31 + [5, 1, 2, 3] + [0] * 130)
        self.assertEqual(found.request, [65] + [0] * 31 + [66] + [0] * 31 + [5, 0, 0, 0] + [0] * 130)
        self.assertEqual(found.text, "A&5&B&1&2&3&&&&&0&0")

    def test_neighbours_are_parted_by_two_characters_and_empty_positions_vanish(self):
        found = vector("oltmib_lldpifnei_get_1", "3&&$0011.2233.4455&$&eth0/3", [3, 0, 17, 34, 51, 68, 85] + [0] * 2098)
        self.assertEqual(found.request[:14], [3, 0, 17, 34, 51, 68, 85] + [ord(c) for c in "eth0/3"] + [0])
        self.assertEqual(found.text, "3&$00-11-22-33-44-55&$&$&$&$0&$0")

    def test_a_bridge_is_sixteen_digits(self):
        found = vector("oltmib_mstp_ifstate_get_1", "&&&&&&8000zz&0", [0] * 37 + [128] + [0] * 57)
        self.assertEqual(found.request[37:41], [-128, 0, 0, 0])
        self.assertEqual(found.text, "0&0&&0&0&0&8000000000000000&0000000000000000&0000000000000000&&0&0")

    def test_two_decimals_of_a_double(self):
        reply = [0] * 40 + [0] * 193 + [0] * 3 + [0] * 128 + [0] + [1074003968, 0, -2147483648, 0] + [0] * 34
        found = vector("oltmib_ntp_get_1", "&&&&&&&&&&2.5&-0", reply)
        self.assertEqual(found.request, reply)
        self.assertEqual(found.text, "&&&&0&0&0&&&0&2.50&-0.00&&0&0")

    def test_a_status_through_a_record_stands_at_its_head(self):
        self.assertEqual(vector("oltmib_mgmtvlan_set_1", "", [-7]).text, "-7&0&&&0&&&&0&0")
        self.assertEqual(vector("oltmib_dyinggasp_set_1", "", [7]).text, "7&0&&0&0")
        zeroes = "&0&0&0&0&0&00-00-00-00-00-00&0&0&0&00-00-00-00-00-00&0&0&0&&0&0"
        self.assertEqual(vector("oltmib_erpsstate_set_1", "", [0x41424241]).text, "ABBA" + zeroes)
        self.assertIsNone(vector("oltmib_erpsstate_set_1", "", [1]).text)  # the host's order of bytes shows

    def test_replies_are_cut(self):
        reply = [1, 2] + [0] * 33 + [3] + [53] * 511 + [0] + [54] * 512 + [0] * 34
        found = vector("oltmib_vlaninfo_get_1", "", reply)
        self.assertEqual(found.text, "1&2&&3&" + "5" * 511 + "&" + "6" * 504)
        self.assertEqual(len(found.text), 1023)

    def test_a_table_without_an_argument_is_read_and_traced_all_the_same(self):
        found = vector("oltmib_cvlan_table_get_1", "101&t&3", [49] + [0] * 683 + [0] * 32 + [1, 2])
        self.assertEqual(found.request, [])
        self.assertEqual(found.traces, ["[str2arg_vlanbitmap: 188]bit 101, oper 3.",
                                        "[arg2str_vlanbitmap: 196]bit 1, oper 1."])


class TheServices(unittest.TestCase):
    def test_every_stub_has_a_name_of_its_own(self):
        stubs = [stub.name for service in SERVICES for stub in service.stubs]
        self.assertEqual(len(set(stubs)), len(stubs))
        self.assertLess(set(APIS), set(stubs))

    def test_they_open_one_after_another(self):
        self.assertEqual(sorted(service.opened for service in SERVICES), list(range(1, len(SERVICES) + 1)))

    def test_no_procedure_is_called_twice(self):
        for service in SERVICES:
            procedures = [stub.procedure for stub in service.stubs]
            self.assertEqual(len(set(procedures)), len(procedures), service.name)

    def test_every_table_has_an_api(self):
        tables = {(service.name, name) for service in SERVICES for name in service.tables}
        self.assertEqual(tables, {(api.service.name, api.table.name) for api in APIS.values()})

    def test_a_wrong_description_is_told(self):
        record = wire.Record("r", "ifx, name[32]")
        for wrong in (lambda: wire.fields_of("ifx, na me"), lambda: wire.fields_of("ifx: float"),
                      lambda: positions.positions_of(record, "ifx, nmae"),
                      lambda: positions.positions_of(record, "ifx as roman"),
                      lambda: description.Service("s", 1, 1).stub("a", "get 1 -> nothing", None, record),
                      lambda: plan.asked_for(description.Call(APIS["oltmib_route_get_1"], "", {"metric": 1}))):
            self.assertRaisesRegex(ValueError, "expected", wrong)


class TheVectors(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.all = made()

    def test_every_api_has_some(self):
        self.assertEqual({each.api.name for each in self.all}, set(APIS))

    def test_a_seed_gives_the_same_ones_and_another_seed_others(self):
        self.assertEqual(self.all, made())
        self.assertNotEqual(self.all, made(seed=plan.SEED + 1))

    def test_every_byte_stands_in_an_argument_in_a_text_sent_and_in_a_text_shown(self):
        everything = set(map(chr, range(1, 256)))
        self.assertEqual(everything - set("".join(each.argument for each in self.all)), set())
        self.assertEqual(everything - set("".join(each.text or "" for each in self.all)), set())
        sent = {unit for each in self.all for unit in each.request if -128 <= unit < 0}
        self.assertEqual(sent, set(range(-128, 0)))
        received = {unit for each in self.all for unit in each.reply if -128 <= unit < 256}
        self.assertEqual(received, set(range(-128, 256)))

    def test_every_edge_has_its_place(self):
        arguments = {part for each in self.all if each.api.table.separators == "&" for part in each.argument.split("&")}
        for edges in (values.NUMBERS, values.REALS, values.MACS, values.DIGITS):
            self.assertEqual([edge for edge in edges if edge not in arguments], [])
        lengths, doubles, wide = set(), set(), set()
        for each in self.all:
            reply = each.api.reply.decode(each.reply) if each.api.reply else {}
            lengths.add(reply.get("alarm_len"))
            for name, value in reply.items():
                {"double": doubles, "int64": wide}.get(each.api.reply.kind[name].kind, set()).add(str(value))
        self.assertEqual(set(values.LENGTHS) - lengths, set())
        self.assertEqual(set(map(str, values.DOUBLES)) - doubles, set())
        self.assertEqual(set(map(str, values.INTS_OF_64_BITS)) - wide, set())

    def test_texts_fill_their_arrays_and_replies_are_cut(self):
        unended, cut = 0, set()
        for each in self.all:
            if each.api.reply:
                reply = each.api.reply.decode(each.reply)
                shown = [position.field.name for position in each.api.table.reply if type(position) is positions.Text]
                unended += any("\0" not in reply[name] for name in shown)
                if len(each.text) == each.api.table.room - 1:
                    cut.add(each.api.table.name)
        self.assertGreater(unended, 100)
        self.assertEqual(cut, {"vlaninfo", "vlanvpninfo", "tm"})  # no other table's reply can be as long

    def test_a_host_with_a_long_of_32_bits_sends_the_same(self):
        def as_such_a_host_reads(text):  # what golden_test.cpp asks for there
            for number, same in (("4294967295", "-1"), ("2147483648", "-2147483648")):
                text = re.sub("(?<!-)" + number, same, text)
            return text

        ways = {"narrow": lambda value: max(texts.INT_MIN, min(texts.INT_MAX, value)),
                "counted in an int": lambda value: texts.signed(value, 32)}
        wide = texts.atoi
        for name, way in ways.items():
            def atoi(text, way=way):
                number = re.match(r"[+-]?[0-9]+", text.lstrip(texts.BLANKS))
                return way(int(number.group())) if number else 0

            texts.atoi = atoi
            try:
                for each in self.all:
                    other = vectors.vector_of(each.api, as_such_a_host_reads(each.argument), each.reply)
                    self.assertEqual((each.api.name, name, other.request), (each.api.name, name, each.request))
                    expected = [trace if trace.startswith("[arg2str_") else as_such_a_host_reads(trace)
                                for trace in each.traces]
                    self.assertEqual(other.traces, expected)
            finally:
                texts.atoi = wide

    def test_no_byte_is_shown_as_a_number_where_the_hosts_char_decides(self):
        for each in self.all:
            for position in each.api.table.reply:
                if isinstance(position, positions.List) and position.field.kind == "char":
                    shown = each.text.split("&")[0].split(",") if each.api.reply else []
                    shown += [re.search(r"queue (-?\d+)", trace).group(1) for trace in each.traces]
                    self.assertEqual([number for number in shown if not 0 <= int(number) < 128], [])


class TheCommand(unittest.TestCase):
    def run_make(self, *options):
        return subprocess.run([sys.executable, os.path.join(HERE, "make"), *options], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, encoding="ascii", check=False)

    def test_check_finds_a_changed_a_missing_and_a_surplus_file(self):
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual(self.run_make("--out", folder).returncode, 0)
            self.assertEqual(self.run_make("--out", folder, "--check").stderr, "")
            path = os.path.join(folder, "vectors", "50013.txt")
            with open(path, encoding="ascii") as file:
                text = file.read()
            with open(path, "w", encoding="ascii") as file:
                file.write(text.replace("vlan10", "vlan11", 1))
            found = self.run_make("--out", folder, "--check")
            self.assertEqual(found.returncode, 1)
            self.assertRegex(found.stderr, r"^make: .*50013.txt:\d+: expected .*vlan10.*, found .*vlan11")
            os.remove(path)
            found = self.run_make("--out", folder, "--check")
            self.assertRegex(found.stderr, "50013.txt: expected a file, found No such")
            with open(path, "w", encoding="ascii") as file:
                file.write(text)
            with open(os.path.join(folder, "vectors", "50012.txt"), "w", encoding="ascii"):
                pass
            self.assertRegex(self.run_make("--out", folder, "--check").stderr, "found 50012.txt")

    def test_one_table_goes_to_standard_output(self):
        found = self.run_make("--table", "route", "--readable", "1", "--edges", "0", "--random", "0")
        names = [line[4:] for line in found.stdout.split("\n") if line.startswith("api ")]
        self.assertEqual(names, ["oltmib_route_get_1", "oltmib_route_getn_1"] + ["oltmib_route_set_1"] * 2)

    def test_an_unknown_table_is_told(self):
        found = self.run_make("--table", "routes")
        self.assertEqual(found.returncode, 1)
        self.assertEqual(found.stderr, "make: --table: expected a table, such as portinfo, found routes\n")


if __name__ == "__main__":
    unittest.main()
