#!/usr/bin/env python3
"""Runs what the documents show: docs.py BUILD_FOLDER PAGE...

Each page has a folder of its own that looks like a checkout in which BUILD_FOLDER is build/release, and a home.

- ```console is a session: each line behind a prompt, "$ " or "# ", is run in one shell of the page, and what it
  says must be what follows; a line "..." stands for any lines. A name before the prompt is that of another home.
  A command that ends in "&" goes on while the next ones run, until the block ends.
- ```cpp is program.cpp: it is compiled and run, and must end with 0.
- ```cmake is built, with program.cpp; what a project needs besides is added.
- ```bash is a script that must end with 0. What would build everything anew, or install for all (demo, test, bench,
  sudo), is only looked at: ./test --all and the test of the packages do that.
- Any other block must be plain text or sql, which the tests of the formats look at, and hold no command.

Within text, `zolt ...` must name verbs and options that there are.
"""
import os
import re
import shlex
import subprocess
import sys
import tempfile
import tty

BUILD = os.path.abspath(sys.argv[1])
ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BLOCK = re.compile(r'^```([^\n]*)\n(.*?)^```$', re.M | re.S)
PROMPT = re.compile(r'(\w*)[$#] (.*)')
COMMAND = re.compile(r'(\w*[$#] |zolt |\./|sudo |cmake |g\+\+ |export )')

# What stands in the place of a program that is only looked at.
LOOKS = {'bin/sudo': '[ "$1 $2" = "apt-get install" ] && shift 2 && for each; do dpkg-deb --info "$each" > /dev/null || exit; done',
         **{name: f'test -x {ROOT}/{name}' for name in ('demo', 'test', 'bench')}}


def say(page, *lines):
    print(page + ': ' + str(lines[0]), *lines[1:], sep='\n  ', file=sys.stderr)
    return True


def matches(wanted, got):
    pattern = ''.join('(?:.*\n)*?' if line == '...' else re.escape(line) + '\n' for line in wanted)
    return re.fullmatch(pattern, ''.join(line + '\n' for line in got)) is not None


def checkout(folder):
    os.makedirs(folder + '/build')
    os.makedirs(folder + '/bin')
    os.symlink(BUILD, folder + '/build/release')
    for name in ('zolt41', 'examples', 'scripts'):
        os.symlink(os.path.join(ROOT, name), os.path.join(folder, name))
    for name, script in LOOKS.items():
        with open(os.path.join(folder, name), 'w', opener=lambda path, flags: os.open(path, flags, 0o755)) as file:
            file.write('#!/bin/sh\n' + script + '\n')
    return {'PATH': f'{folder}/bin:{BUILD}/bin:/usr/bin:/bin', 'HOME': folder, 'ZOLT_HOME': folder + '/home',
            'LC_ALL': 'C.UTF-8', 'NO_COLOR': '1', 'TERM': 'dumb'}


class Shell:
    """One shell before a terminal, whose words come back after each command."""

    MARK = '--mark--'

    def __init__(self, folder, environment):
        screen, terminal = os.openpty()
        tty.setraw(terminal)
        self.process = subprocess.Popen(['bash'], cwd=folder, env=environment, stdin=subprocess.PIPE,
                                        stdout=terminal, stderr=terminal, text=True)
        os.close(terminal)
        self.screen = os.fdopen(screen)

    def line(self):
        return self.screen.readline().rstrip('\n')

    def run(self, command):
        print(command, file=self.process.stdin, flush=True)
        if command.endswith('&'):
            # It says so when it hears.
            return [self.line()]
        print('echo ' + self.MARK, file=self.process.stdin, flush=True)
        return list(iter(self.line, self.MARK))

    def end(self):
        self.process.stdin.close()
        self.process.wait()
        self.screen.close()


def check_session(page, shell, block):
    failed = False
    commands = []
    for line in block.splitlines():
        prompt = PROMPT.match(line)
        if prompt:
            commands.append((*prompt.groups(), []))
        elif commands:
            commands[-1][2].append(line)
    background = any(command.endswith('&') for _, command, _ in commands)
    for number, (home, command, wanted) in enumerate(commands):
        shell.run('ZOLT_HOME=$HOME/' + (home or 'home'))
        got = shell.run(re.sub(r'\s+# .*$', '', command))
        if background and number == len(commands) - 1:
            got += shell.run('wait')
        if not matches(wanted, got):
            failed = say(page, f'$ {command}', 'expected:', *wanted, 'got:', *got)
    return failed


def run(page, folder, environment, *command):
    result = subprocess.run(command, cwd=folder, env=environment, capture_output=True, text=True)
    return result.returncode != 0 and say(page, f'{command} ended with {result.returncode}', result.stdout, result.stderr)


def write(folder, name, text):
    with open(os.path.join(folder, name), 'w') as file:
        file.write(text)


def check_program(page, folder, environment, source):
    write(folder, 'program.cpp', source)
    compiler = [os.environ.get('CXX', 'g++'), '-std=c++20', '-Wall', '-I.', 'program.cpp', '-o', 'program', '-L' + BUILD + '/lib',
                '-lzolt41', '-Wl,-rpath,' + BUILD + '/lib']
    home = dict(environment, ZOLT_HOME=folder + '/program-home')
    return run(page, folder, home, *compiler) or run(page, folder, home, './program')


def check_project(page, folder, environment, text):
    if 'project(' not in text:
        text = 'cmake_minimum_required(VERSION 3.20)\nproject(program CXX)\n' + text
    if 'add_executable' not in text:
        text = text.replace('target_link', 'add_executable(program program.cpp)\ntarget_link', 1)
    write(folder, 'CMakeLists.txt', text)
    command = 'cmake -S . -B build/project -DCMAKE_PREFIX_PATH=$HOME/.local && cmake --build build/project && build/project/program'
    return run(page, folder, environment, 'bash', '-c', command)


def check_inline(page, environment, text):
    failed = False
    for span in re.findall(r'`(zolt\s[^`]*)`', text):
        words = shlex.split(span.replace('\n', ' '))[1:]
        failed |= run(page, None, environment, 'zolt', '--help', *words)
    return failed


def check(page):
    with open(page) as file:
        text = file.read()
    name = os.path.relpath(page, ROOT)
    with tempfile.TemporaryDirectory() as folder:
        environment = checkout(folder)
        shell = Shell(folder, environment)
        failed = check_inline(name, environment, BLOCK.sub('', text))
        for kind, block in BLOCK.findall(text):
            if kind == 'console':
                failed |= check_session(name, shell, block)
            elif kind == 'cpp':
                failed |= check_program(name, folder, environment, block)
            elif kind == 'cmake':
                failed |= check_project(name, folder, environment, block)
            elif kind == 'bash':
                failed |= run(name, folder, environment, 'bash', '-euc', block)
            elif kind not in ('', 'sql'):
                failed |= say(name, f'a block of "{kind}" is not run')
            elif any(COMMAND.match(line) for line in block.splitlines()):
                failed |= say(name, 'commands in a block that is not run:', block)
        shell.end()
        return failed


sys.exit(any([check(page) for page in sys.argv[2:]]))
