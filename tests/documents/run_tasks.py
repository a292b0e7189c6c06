"""Reads the playbook and runs the commands of its tasks against a program on a machine of its own.

Usage: run_tasks.py PROGRAM PLAYBOOK
"""
import os
import re
import subprocess
import sys
import tempfile

import yaml


def main(program, playbook):
    with open(playbook, encoding="utf-8") as file:
        (play,) = yaml.safe_load(file)
    with tempfile.TemporaryDirectory() as folder:
        environment = {"PATH": os.environ["PATH"], "HOME": folder,
                       "ORVA_ISOLATED_MACHINE": folder, "USERPROFILE": folder}
        values = {"certificates_folder": folder, "certificates_password": "the password"}

        def fill(text):
            return re.sub(r"{{ (\w+) }}", lambda found: values[found[1]], text)

        def run(words, entered=""):
            return subprocess.run([program, *words], input=entered, text=True, check=True,
                                  stdout=subprocess.PIPE, env=environment).stdout

        paths = ["--public-key", program, "--private-key", program, "--certificate", program]
        run(["set", "cluster", *paths])
        export = os.path.join(folder, "entries.cms")
        run(["export", "--password-stdin", "--output", export], "the password\n")
        run(["remove", "cluster"])
        printed = {}
        for repetition in (1, 2):
            for task in play["tasks"]:
                command = task.get("ansible.builtin.command")
                if command and "check" not in command["argv"]:
                    words = [fill(word) for word in command["argv"]]
                    printed[repetition, "--dry-run" in words] = run(
                        words[1:], fill(command["stdin"]) + "\n")
        assert "cluster" in printed[1, True], printed
        assert not printed[2, True], printed
        assert program in run(["get", "cluster"])


main(*sys.argv[1:])
