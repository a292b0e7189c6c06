"""Runs the commands of a playbook's tasks with a program on a machine of its own.

Usage: run_tasks.py PROGRAM PLAYBOOK
"""
import re
import subprocess
import sys
import tempfile

import yaml

program, playbook = sys.argv[1:]
with open(playbook, encoding="utf-8") as file:
    (play,) = yaml.safe_load(file)
with tempfile.TemporaryDirectory() as folder:
    environment = {"HOME": folder, "ORVA_ISOLATED_MACHINE": folder}
    values = {"certificates_folder": folder, "certificates_password": "the password"}

    def fill(text):
        return re.sub(r"{{ (\w+) }}", lambda found: values[found[1]], text)

    def run(*words, entered=""):
        return subprocess.run([program, *words], input=entered, text=True, check=True,
                              stdout=subprocess.PIPE, env=environment).stdout

    run("set", "cluster", "--public-key", "/p", "--private-key", "/k", "--certificate", "/c")
    run("export", "--password-stdin", "--output", folder + "/entries.cms", entered="the password")
    run("remove", "cluster")
    printed = [run(*map(fill, command["argv"][1:]), entered=fill(command["stdin"]) + "\n")
               for command in (task["ansible.builtin.command"] for task in play["tasks"][2:4])]
    assert printed == ["would add cluster\n", "add cluster\n"], printed
    assert "/c\n" in run("get", "cluster")
