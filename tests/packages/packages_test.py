"""Tests of the Debian packages in the folder TOPO_PACKAGES.

A package is unpacked, or installed into a root of its own with a package database of its own. Nothing is installed on this
machine.
"""

import gzip
import json
import os
import pathlib
import re
import select
import shutil
import subprocess
import tempfile
import unittest

PACKAGES = pathlib.Path(os.environ.get("TOPO_PACKAGES", "."))
VERSION = os.environ.get("TOPO_VERSION", "")
ORB = os.environ.get("TOPO_PACKAGE_ORB", "")
NAMES = ("topo-agent", "topoctl", "topo-dev")
UNIT = "topo-agentd.service"
CONF = "etc/topo-agent/agent.conf"
ENABLED = "etc/systemd/system/multi-user.target.wants/" + UNIT
SECONDS = 60  # for any command


def run(*command, **options):
    """The output of a command that must succeed."""
    ended = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=SECONDS,
                           stdin=subprocess.DEVNULL, check=False, **options)
    if ended.returncode != 0:
        raise AssertionError(f"{command} ended with {ended.returncode}:\n{ended.stdout}")
    return ended.stdout


def package(name):
    found = list(PACKAGES.glob(f"{name}_*.deb"))
    if len(found) != 1:
        raise AssertionError(f"{len(found)} packages {name} in {PACKAGES}")
    return found[0]


def field(name, wanted):
    return run("dpkg-deb", "--field", str(package(name)), wanted).strip()


def files_of(name):
    """The paths of the files and links of a package."""
    listing = run("dpkg-deb", "--contents", str(package(name))).splitlines()
    return {line.split(maxsplit=5)[5].split(" -> ")[0] for line in listing if not line.startswith("d")}


class Root:
    """A root with a package database of its own."""

    def __init__(self, folder):
        self.path = pathlib.Path(folder)
        for name in ("var/lib/dpkg/updates", "var/lib/dpkg/info", "etc"):
            (self.path / name).mkdir(parents=True)
        for name in ("status", "available"):
            (self.path / "var/lib/dpkg" / name).touch()
        for name in ("passwd", "group"):
            (self.path / "etc" / name).touch()

    def dpkg(self, *arguments):
        # Maintainer scripts run with DPKG_ROOT instead of in the root, which has no shell.
        as_root = [] if os.geteuid() == 0 else ["fakeroot"]
        return run(*as_root, "dpkg", f"--root={self.path}", "--force-not-root", "--force-script-chrootless",
                   "--force-depends", "--force-confold", "--log=/dev/null", *arguments,
                   env=dict(os.environ, DEBIAN_FRONTEND="noninteractive", PATH="/usr/sbin:/usr/bin:/sbin:/bin"))

    def file(self, name):
        return self.path / name


class Agent:
    """A running agent of an unpacked package, on a free port."""

    def __init__(self, root):
        conf = root / CONF
        text = conf.read_text(encoding="utf-8")
        for folder in ("/var/lib/topo-agent", "/run/topo-agent"):
            if folder not in text:
                raise AssertionError(f"{conf} has nothing in {folder}")
            (root / folder[1:]).mkdir(parents=True)
            text = text.replace(folder, f"{root}{folder}")
        text = text.replace("127.0.0.1:2810", "127.0.0.1:0")
        conf.write_text(text, encoding="utf-8")
        self.reference = root / "run/topo-agent/manager.ior"
        self.process = subprocess.Popen(
            [root / "usr/bin/topo-agentd", "--config", conf, "--network",
             root / "usr/share/topo-manager/networks/backbone.json"],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, cwd="/")

    def ready_line(self):
        ready, _, _ = select.select([self.process.stdout], [], [], SECONDS)
        return self.process.stdout.readline() if ready else "not ready in time"

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        try:
            self.process.wait(timeout=SECONDS)
        finally:
            self.process.kill()
            self.process.stdout.close()


class Packages(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="topo-packages-"))
        self.folder.chmod(0o755)
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def unpack(self, *names):
        """Unpacks packages into one folder."""
        root = self.folder / "-".join(("unpacked", *names))
        for name in names:
            run("dpkg-deb", "--extract", str(package(name)), str(root))
        return root

    def changed_package(self, version, change):
        """A copy of topo-agent with another version, after change(folder of its content)."""
        content = self.folder / f"content-{version}"
        run("dpkg-deb", "--raw-extract", str(package("topo-agent")), str(content))
        control = content / "DEBIAN/control"
        text = control.read_text(encoding="utf-8")
        control.write_text(text.replace(f"Version: {VERSION}\n", f"Version: {version}\n"), encoding="utf-8")
        change(content)
        changed = self.folder / f"topo-agent_{version}.deb"
        run("dpkg-deb", "-Znone", "--build", str(content), str(changed))
        return changed

    def test_pass_lintian(self):
        as_root = ["--allow-root"] if os.geteuid() == 0 else []
        print(run("lintian", *as_root, "--fail-on", "error", *(str(package(name)) for name in NAMES)))

    def test_depend_on_the_right_packages(self):
        for name in NAMES:
            self.assertEqual(field(name, "Version"), VERSION)
            self.assertEqual(field(name, "Source"), "topo-manager")
        client = field("topoctl", "Depends")
        self.assertIn(f"{ORB}-", client)
        self.assertIn("libc6 (>= ", client)
        self.assertNotIn("topo-", client)
        agent = field("topo-agent", "Depends")
        for library in ("libace-", f"{ORB}-", "libsqlite3-0", "libsystemd0"):
            self.assertIn(library, agent)
        self.assertIn(f"topo-agent (= {VERSION})", field("topo-dev", "Depends"))
        self.assertIn(f"{ORB}-dev", field("topo-dev", "Depends"))

    def test_have_no_file_in_common(self):
        seen = {}
        for name in NAMES:
            for path in files_of(name):
                self.assertNotIn(path, seen, f"of {name}")
                seen[path] = name
        for wanted, name in (("./usr/bin/topo-agentd", "topo-agent"), (f"./{CONF}", "topo-agent"),
                             ("./usr/lib/topo-manager/libzu_corba_topo.so", "topo-agent"),
                             (f"./lib/systemd/system/{UNIT}", "topo-agent"),
                             ("./usr/bin/topoctl", "topoctl"), ("./usr/bin/topo-conformance", "topo-dev"),
                             ("./usr/lib/cmake/TopoManager/TopoManagerConfig.cmake", "topo-dev")):
            self.assertEqual(seen.get(wanted), name, wanted)

    def test_have_manuals_without_warnings(self):
        root = self.unpack(*NAMES)
        pages = sorted(root.glob("usr/share/man/*/*.gz"))
        self.assertEqual([page.name for page in pages],
                         ["topo-conformance.1.gz", "topoctl.1.gz", "topo-network.5.gz", "topo-agentd.8.gz"])
        environment = dict(os.environ, LC_ALL="C.UTF-8", MANWIDTH="80", MANROFFSEQ="")
        for page in pages:
            warnings = run("sh", "-c", 'man --warnings -E UTF-8 -l -Tutf8 -Z "$1" 2>&1 >/dev/null', "--", str(page),
                           env=environment)
            self.assertEqual(warnings, "", page.name)

    def test_have_every_option_in_the_manuals(self):
        root = self.unpack(*NAMES)
        for page in root.glob("usr/share/man/man[18]/*.gz"):
            program = page.name.split(".")[0]
            options = re.findall(r"(?m)^  (?:-h,)?(--[\w-]+)", run(str(root / "usr/bin" / program), "--help"))
            self.assertGreater(len(options), 5)
            text = gzip.decompress(page.read_bytes()).decode("utf-8").replace("\\-", "-")
            for option in options:
                self.assertIn(f"\\fB{option}\\fR", text, page.name)

    def test_serve_a_network_from_the_unpacked_files(self):
        root = self.unpack("topo-agent")
        client = self.unpack("topoctl") / "usr/bin/topoctl"
        for program in (root / "usr/bin/topo-agentd", client):
            own = [line for line in run("ldd", str(program)).splitlines() if "libtopo" in line]
            self.assertTrue(own)
            for line in own:
                self.assertIn(f" => {self.folder}/", line)
        with Agent(root) as agent:
            self.assertTrue(agent.ready_line().startswith("topo-agentd ready: "))
            call = [str(client), "--ior-file", str(agent.reference), "--format", "json"]
            nodes = json.loads(run(*call, "topo"))
            self.assertGreater(len(nodes), 1)
            self.assertIn(f"{self.folder}", run(*call, "status"))

    def test_create_the_account_and_enable_the_service(self):
        root = Root(self.folder / "root")
        root.dpkg("--install", str(package("topo-agent")), str(package("topoctl")))
        accounts = root.file("etc/passwd").read_text(encoding="utf-8")
        self.assertRegex(accounts, r"(?m)^topo-agent:.*:/var/lib/topo-agent:\S*nologin$")
        self.assertTrue(root.file(ENABLED).is_symlink())
        self.assertEqual(root.file(CONF).stat().st_mode & 0o777, 0o644)
        root.dpkg("--remove", "topo-agent")
        self.assertTrue(root.file(CONF).exists())
        self.assertFalse(root.file("usr/bin/topo-agentd").exists())
        self.assertTrue(root.file("usr/bin/topoctl").exists())
        # A package that was removed and is installed again serves again.
        root.dpkg("--install", str(package("topo-agent")))
        self.assertFalse(root.file("etc/systemd/system/" + UNIT).is_symlink())
        self.assertTrue(root.file(ENABLED).is_symlink())
        self.assertEqual(root.file("etc/passwd").read_text(encoding="utf-8"), accounts)

    def test_have_a_service_that_can_list_the_addresses_of_the_host_and_write_a_log(self):
        unit = self.unpack("topo-agent") / "lib/systemd/system" / UNIT
        settings = dict(line.split("=", 1) for line in unit.read_text(encoding="utf-8").splitlines()
                        if "=" in line and not line.startswith("#"))
        # getifaddrs() asks the kernel over netlink.
        self.assertEqual(set(settings["RestrictAddressFamilies"].split()),
                         {"AF_INET", "AF_INET6", "AF_NETLINK", "AF_UNIX"})
        self.assertEqual(settings["LogsDirectory"], "topo-agent")
        self.assertEqual(settings["LogsDirectoryMode"], "0750")

    def test_keep_a_changed_configuration_in_an_upgrade(self):
        def new_default(content):
            with (content / CONF).open("a", encoding="utf-8") as conf:
                conf.write("# a line of the new version\n")

        root = Root(self.folder / "root")
        root.dpkg("--install", str(package("topo-agent")))
        root.file(CONF).write_text('store = "mine.db"\n', encoding="utf-8")
        root.file(ENABLED).unlink()  # as systemctl disable does
        upgrade = self.changed_package(VERSION + "+1", new_default)
        root.dpkg("--install", str(upgrade))
        self.assertEqual(root.file(CONF).read_text(encoding="utf-8"), 'store = "mine.db"\n')
        self.assertIn("a line of the new version", root.file(CONF + ".dpkg-dist").read_text(encoding="utf-8"))
        self.assertFalse(root.file(ENABLED).is_symlink())
        self.assertIn(f"Version: {VERSION}+1", root.dpkg("--status", "topo-agent"))

    def test_keep_the_store_in_a_purge(self):
        root = Root(self.folder / "root")
        state = root.file("var/lib/topo-agent")
        root.dpkg("--install", str(package("topo-agent")))
        state.mkdir()
        (state / "network.db").write_text("records", encoding="utf-8")
        root.dpkg("--purge", "topo-agent")
        self.assertTrue((state / "network.db").exists())
        self.assertFalse(root.file("etc/topo-agent").exists())
        self.assertFalse(root.file(ENABLED).is_symlink())
        (state / "network.db").unlink()
        root.dpkg("--install", str(package("topo-agent")))
        root.dpkg("--purge", "topo-agent")
        self.assertFalse(state.exists())


if __name__ == "__main__":
    unittest.main()
