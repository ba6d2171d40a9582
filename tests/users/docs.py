#!/usr/bin/env python3
"""Runs what the documents show: docs.py BUILD_FOLDER PAGE...

A block ```console is a session: each line that begins with "$ " is run in one shell of a fresh home, and what
it says must be what follows; a line "..." stands for any lines. A command that ends in "&" goes on while the
next ones run, until the block ends. A block ```cpp with a main is compiled and run, and must end with 0.
"""
import os
import re
import subprocess
import sys
import tempfile
import tty

BUILD = os.path.abspath(sys.argv[1])
ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def blocks(text, kind):
    return re.findall(r'^```' + kind + r'\n(.*?)^```$', text, re.M | re.S)


def matches(wanted, got):
    pattern = ''.join('(?:.*\n)*?' if line == '...' else re.escape(line) + '\n' for line in wanted)
    return re.fullmatch(pattern, ''.join(line + '\n' for line in got)) is not None


class Shell:
    """One shell before a terminal, whose words come back after each command."""

    MARK = '--mark--'

    def __init__(self, folder):
        environment = {'PATH': BUILD + '/bin:/usr/bin:/bin', 'HOME': folder, 'ZOLT_HOME': folder + '/home',
                       'LC_ALL': 'C.UTF-8', 'NO_COLOR': '1', 'TERM': 'dumb'}
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
        if line.startswith('$ '):
            commands.append((line[2:], []))
        elif commands:
            commands[-1][1].append(line)
    background = any(command.endswith('&') for command, _ in commands)
    for number, (command, wanted) in enumerate(commands):
        got = shell.run(re.sub(r'\s+# .*$', '', command))
        if background and number == len(commands) - 1:
            got += shell.run('wait')
        if not matches(wanted, got):
            print(f'{page}: $ {command}', 'expected:', *wanted, 'got:', *got, sep='\n  ', file=sys.stderr)
            failed = True
    return failed


def check_program(page, folder, source):
    path = os.path.join(folder, 'program')
    with open(path + '.cpp', 'w') as file:
        file.write(source)
    compiler = [os.environ.get('CXX', 'g++'), '-std=c++20', '-Wall', '-I', ROOT, path + '.cpp', '-o', path,
                '-L', BUILD + '/lib', '-lzolt41', '-Wl,-rpath,' + BUILD + '/lib']
    for command in (compiler, [path]):
        result = subprocess.run(command, env=dict(os.environ, ZOLT_HOME=folder + '/program-home'), capture_output=True, text=True)
        if result.returncode != 0:
            print(f'{page}: {command[0]} ended with {result.returncode}', result.stdout, result.stderr, file=sys.stderr)
            return True
    return False


def check(page):
    with open(page) as file:
        text = file.read()
    name = os.path.relpath(page, ROOT)
    with tempfile.TemporaryDirectory() as folder:
        shell = Shell(folder)
        failed = [check_session(name, shell, block) for block in blocks(text, 'console')]
        shell.end()
        failed += [check_program(name, folder, source) for source in blocks(text, 'cpp') if 'int main' in source]
        return any(failed)


sys.exit(any([check(page) for page in sys.argv[2:]]))
