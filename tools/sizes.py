#!/usr/bin/env python3
"""Refuses functions of 60 lines and more, and files of more than 800.

sizes.py            looks at all sources
sizes.py self-test  proves that it can fail

The sources are laid out by the formatter, so a function begins with a line that leaves a brace open and ends
with the first line behind it that closes one in the same column.
"""
import re
import subprocess
import sys

LONGEST_FUNCTION, LONGEST_FILE = 59, 800  # lines
NO_FUNCTION = re.compile(r'\s*({|(namespace|class|struct|enum|union|extern "C"|template <[^>]*> (class|struct))\b)')


def findings(name, lines):
    if len(lines) > LONGEST_FILE:
        yield f'{name}: {len(lines)} lines'
    begin = None  # of the statement that the line belongs to
    for number, line in enumerate(lines):
        line = re.sub(r'\s*//.*', '', line)
        if not line.strip() or line.startswith('#'):
            continue
        if begin is None:
            begin = number
        head = ' '.join(part.strip() for part in lines[begin:number + 1])
        if line.endswith('{') and '(' in head and not head.endswith('= {') and not NO_FUNCTION.match(head):
            column = len(lines[begin]) - len(lines[begin].lstrip())
            closing = re.compile(' ' * column + r'}')
            end = next((n for n in range(number + 1, len(lines)) if closing.match(lines[n])), number)
            if end - begin + 1 > LONGEST_FUNCTION:
                yield f'{name}:{begin + 1}: {end - begin + 1} lines: {lines[begin].strip()}'
        if line.rstrip().endswith((';', '{', '}', ':', '},')):
            begin = None


def self_test():
    body = ['  x();'] * 58
    cases = [(['void F() {'] + body[:57] + ['}'], 0), (['void F() {'] + body + ['}'], 1),
             (['void F(int a,', '       int b) {'] + body[:57] + ['}'], 1),
             (['struct S {', '  void F() {'] + ['  ' + x for x in body] + ['  }', '};'], 1),
             (['constexpr Row kRows[] = {'] + ['    {F(1)},'] * 90 + ['};'], 0),
             (['namespace vexa {'] + ['int a;'] * 90 + ['}  // namespace vexa'], 0), (['int a;'] * 801, 1)]
    wrong = [(lines[:2], expected) for lines, expected in cases if len(list(findings('x', lines))) != expected]
    print(wrong or 'sizes: self-test passed')
    return bool(wrong)


def main():
    if sys.argv[1:] == ['self-test']:
        return self_test()
    names = subprocess.run(['git', 'ls-files', '*.cpp', '*.h'], capture_output=True, text=True, check=True).stdout.split()
    found = [f for name in names for f in findings(name, open(name, encoding='utf-8').read().split('\n'))]
    print('\n'.join(found))
    return bool(found)


sys.exit(main())
