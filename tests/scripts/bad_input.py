"""What the scripts answer to wrong arguments, to files that are not what they should be, and to a
full disk: one clear line, a failure, and no file."""
import json
import pathlib
import resource
import subprocess
import sys
import tempfile
import unittest

TOP = pathlib.Path(sys.argv.pop()).resolve()
SCRIPTS = sorted(path for path in (TOP / "scripts").iterdir() if path.is_file())
CONTEXT = {"date": "2026-01-02T03:04:05+00:00", "num_cpus": 2, "mhz_per_cpu": 1000, "load_avg": [1]}
RUN = {"run_type": "iteration", "family_index": 0, "per_family_instance_index": 0,
       "run_name": "Add/ours/1", "cpu_time": 1.0, "time_unit": "ns", "result": 1}
RESULTS = {"context": CONTEXT, "benchmarks": [RUN]}


class BadInput(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_script(self, *command, full=False):
        return subprocess.run(
            [*map(str, command)], cwd=TOP, capture_output=True, text=True, timeout=60,
            preexec_fn=lambda: full and resource.setrlimit(resource.RLIMIT_FSIZE, (0, 0)))

    def refused(self, *command, full=False):
        before = sorted(self.folder.iterdir())
        done = self.run_script(*command, full=full)
        self.assertNotEqual(done.returncode, 0, done.stdout)
        self.assertRegex(done.stderr, r"error: \S")
        self.assertNotIn("Traceback", done.stderr)
        self.assertEqual(sorted(self.folder.iterdir()), before)
        return done

    def report(self, results):
        bench = TOP / "bench"
        return ("python3", TOP / "scripts/lib/bench_report.py", "--goals", bench / "goals.txt",
                "--bounds", bench / "bounds.txt", "--sources", bench,
                "--page", self.folder / "page.html", results)

    def corpus(self, *arguments):
        return ("python3", TOP / "scripts/lib/corpus.py", *arguments)

    def test_unknown_arguments_are_refused_before_anything_is_done(self):
        for script in SCRIPTS:
            with self.subTest(script.name):
                if script.name != "demo":  # passes them on
                    self.assertEqual(self.refused(script, "--bogus").stdout, "")
                done = self.run_script(script, "--help")
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                self.assertNotEqual(done.stdout, "")

    def test_results_and_kept_programs_that_are_none(self):
        file = self.folder / "family.json"
        for contents in (b"", b"{", b"[]", b"7", b"\x00\xff\xfe\x80", b'{"context": {}}',
                         b'{"context": {}, "benchmarks": []}', json.dumps(RESULTS).encode()[:-3],
                         json.dumps(RESULTS).encode().replace(b'"ns"', b'"fortnight"')):
            with self.subTest(contents):
                file.write_bytes(contents)
                self.refused(*self.report(file))
        file.write_bytes(b"AAAA\n!\n")
        self.refused(*self.corpus("unpack", file, self.folder))
        for wrong in (self.folder, self.folder / "missing"):
            self.refused(*self.report(wrong))
            self.refused(*self.corpus("pack", wrong / "missing", file))

    def test_a_full_disk_leaves_what_was_there(self):
        file = self.folder / "family.json"
        file.write_text(json.dumps(RESULTS))
        self.refused(*self.report(file), full=True)
        programs = self.folder / "programs"
        programs.mkdir()
        (programs / "one").write_bytes(b"program")
        self.refused(*self.corpus("pack", programs, file), full=True)
        self.assertEqual(file.read_text(), json.dumps(RESULTS))
        done = self.run_script(*self.report(file))
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertTrue((self.folder / "page.html").stat().st_size > 1000)


unittest.main()
