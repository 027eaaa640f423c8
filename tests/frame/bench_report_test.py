#!/usr/bin/env python3
"""Holds bench/report.py to what its tables claim, on made-up figures.

usage: bench_report_test.py [TEST...]   with SOURCE_DIR in the environment
"""
import json
import os
import sys
import tempfile
import unittest
import xml.etree.ElementTree
from pathlib import Path

BENCH = Path(os.environ["SOURCE_DIR"]) / "bench"
sys.path.insert(0, str(BENCH))

import chart  # noqa: E402
import report  # noqa: E402


def inputs_of(**times):
    """One input "x" with the times of each contender."""
    return {"x": {who: report.Measurement(list(values)) for who, values in times.items()}}


def group_of(inputs, **rules):
    return report.Group({"work": "w", "title": "A title", **rules}, inputs)


def run(name, **fields):
    return {"name": name, "run_type": "iteration", "family_index": 0, "time_unit": "ns", "cpu_time": 1.0,
            "real_time": 1.0, **fields}


def read(*runs):
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "room.json").write_text(json.dumps({"benchmarks": list(runs)}))
        return report.read(folder)


class MeasuredSpeed(unittest.TestCase):
    def verdicts(self, own, aim, measure="time", **others):
        group = group_of(inputs_of(zorvcrt=own, **others), peer="peer", measure=measure, aims=[aim])
        return [reached for _, reached in group.aims("x")]

    def test_a_ratio_is_that_of_the_medians(self):
        group = group_of(inputs_of(zorvcrt=[1, 50, 2000], peer=[90, 100, 110]), peer="peer")
        self.assertEqual(group.ratios["x"], {"zorvcrt": 0.5, "peer": 1.0})

    def test_one_input_of_the_peer_may_stand_for_all(self):
        inputs = {"small": inputs_of(zorvcrt=[10], peer=[20])["x"], "large": inputs_of(zorvcrt=[40], peer=[90])["x"]}
        group = group_of(inputs, peer="peer", peer_input="small")
        self.assertEqual([group.ratios[name]["zorvcrt"] for name in inputs], [0.5, 2.0])

    def test_throughput_is_the_inverse_of_time(self):
        group = group_of(inputs_of(zorvcrt=[50], peer=[100]), peer="peer", measure="throughput")
        self.assertEqual(group.ratios["x"]["zorvcrt"], 2.0)

    def test_growth_is_the_time_per_unit_beside_the_first(self):
        inputs = {"10 MB": {"zorvcrt": report.Measurement([100])}, "1,000 MB": {"zorvcrt": report.Measurement([30000])}}
        group = group_of(inputs, measure="growth", aims=[{"at_most": 2.0}])
        self.assertEqual(group.ratios["1,000 MB"]["zorvcrt"], 3.0)
        self.assertEqual([reached for _, reached in group.aims("1,000 MB")], [False])
        self.assertEqual(group.aims("10 MB"), [])

    def test_an_aim_is_reached_at_its_bound_and_missed_beyond_it(self):
        self.assertEqual(self.verdicts([30], {"at_most": 0.3}, peer=[100]), [True])
        self.assertEqual(self.verdicts([30.1], {"at_most": 0.3}, peer=[100]), [False])
        self.assertEqual(self.verdicts([50], {"at_least": 2}, "throughput", peer=[100]), [True])
        self.assertEqual(self.verdicts([50.1], {"at_least": 2}, "throughput", peer=[100]), [False])

    def test_an_aim_may_name_another_contender(self):
        self.assertEqual(self.verdicts([30], {"than": "other", "at_most": 1.0}, peer=[100], other=[31]), [True])
        self.assertEqual(self.verdicts([30], {"than": "other", "at_most": 1.0}, peer=[100], other=[29]), [False])

    def test_best_of_all_leaves_out_the_limits_alone(self):
        inputs = inputs_of(zorvcrt=[30], peer=[100], limit=[1], other=[29])
        aims = [{"than": "*", "at_most": 1.0}]
        group = group_of(inputs, peer="peer", limits=["limit"], aims=aims)
        self.assertEqual([reached for _, reached in group.aims("x")], [False])
        group = group_of(inputs, peer="peer", limits=["limit", "other"], aims=aims)
        self.assertEqual([reached for _, reached in group.aims("x")], [True])

    def test_an_aim_counts_for_the_inputs_that_it_names(self):
        self.assertEqual(self.verdicts([30], {"at_most": 0.3, "inputs": "y"}, peer=[100]), [])

    def test_the_overview_has_the_mean_speed_beside_the_rival(self):
        inputs = {name: {"zorvcrt": report.Measurement([10]), "peer": report.Measurement([20]),
                         "rival": report.Measurement([rival])} for name, rival in (("x", 20), ("y", 80))}
        self.assertEqual(group_of(inputs, peer="peer").speed(), ("peer", 2.0))
        self.assertAlmostEqual(group_of(inputs, peer="peer", rival="rival").speed()[1], 4.0)
        self.assertAlmostEqual(group_of(inputs, peer="peer", measure="throughput").speed()[1], 2.0)
        self.assertIsNone(group_of(inputs, peer="missing").speed())

    def test_what_was_not_measured_is_not_reached(self):
        self.assertEqual(self.verdicts([30], {"at_most": 0.3}), [None])
        self.assertEqual(self.verdicts([], {"at_most": 0.3}, peer=[100]), [None])

    def test_processor_time_counts_except_where_a_benchmark_measures_itself(self):
        works = read(run("w/x/a", cpu_time=2.0), run("w/x/b/manual_time", real_time=3.0, time_unit="us"))
        self.assertEqual(works["w"]["x"]["a"].times, [2.0])
        self.assertEqual(works["w"]["x"]["b"].times, [3000.0])

    def test_trouble_is_told_and_is_no_time(self):
        works = read(run("w/x/a", error_occurred=True, error_message="wrong result"))
        row = report.contender_row(group_of(works["w"], peer="b"), "x", "a", works["w"]["x"]["a"])
        self.assertIn("left out: wrong result", row)

    def test_rows_come_in_the_order_of_the_program(self):
        works = read(run("w/second/a", family_index=1), run("w/first/a", family_index=0))
        self.assertEqual(list(works["w"]), ["first", "second"])

    def test_a_chart_is_well_formed_and_the_same_for_the_same_figures(self):
        inputs = {"a < b & c": inputs_of(zorvcrt=[50], peer=[100], slow=[9000])["x"]}
        group = group_of(inputs, peer="peer", aims=[{"at_most": 0.3}])
        picture = chart.drawn(group, report.OWN, report.number)
        xml.etree.ElementTree.fromstring(picture)
        self.assertEqual(picture, chart.drawn(group, report.OWN, report.number))
        xml.etree.ElementTree.fromstring(chart.overview([("a & b", "peer", 0.5), ("c", "peer", 8)], report.number))

    def test_every_work_that_has_a_table_is_measured(self):
        sources = "".join(path.read_text() for path in BENCH.rglob("*.?pp"))
        rules = report.tomllib.loads((BENCH / "groups.toml").read_text())["group"]
        missing = [rule["work"] for rule in rules if f'"{rule["work"]}"' not in sources]
        self.assertEqual(missing, [])


if __name__ == "__main__":
    unittest.main()
