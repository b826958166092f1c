"""The page of a review in a real browser: what it holds, what its script does, and what hostile names do not.

usage: page_test.py PROGRAM CHROMIUM [AXE]    AXE is axe-core's script, for a check of accessibility
"""
import functools
import hashlib
import http.server
import json
import os
import re
import shutil
import sys
import tempfile
import threading
import unittest
import urllib.parse

from chromium import Browser
from prefix import Machine

PROGRAM, CHROMIUM, AXE = (sys.argv[1:4] + ['', '', ''])[:3]
INVISIBLE = re.compile('[\0-\x08\x0b-\x1f\x7f-\x9f\xad\u061c\u200b-\u200f\u2028-\u202e\u2060\u2066-\u2069\ufeff]')
BROKEN = '<img src=x onerror=document.title=1>" onclick="x'  # a file's name cannot hold a slash
HOSTILE = 'a\u202egpj.exe \u200b\xad\ufeff \x01\x7f\x85\u2067 \t\n "\'&amp;'
STATUS = "document.querySelector('[role=status]').textContent"
SHOWN = "[...document.querySelectorAll('li[id^=c]')].filter(e => e.checkVisibility()).map(e => e.id)"


def before():
    files = {'windows/win.ini': 10, 'windows/system32/shared.dll': 1500, 'Program Files/Old/gone.exe': 1000}
    data = ''.join(f'{i % 256:02x},' for i in range(4000))
    return files, rf'''
[Software\\App]
"text"="version 1.0 of \x20ac <b>"
"number"=dword:00000001
"short"=hex:00,01,02,03
"big"=hex:{data}00
"long"="{'x' * 900}A{'y' * 900}"
"multi"=str(7):"one\0two\0"
[Software\\Gone]
@="x"
'''


def after():
    files, system = before()
    del files['Program Files/Old/gone.exe']
    files.update({'windows/win.ini': 12, 'setup.log': 70, 'Tools/helper.exe': 3000, 'Program Files/App/app.exe': 5,
                  'users/me/AppData/Start Menu/App.lnk': 3, 'users/me/Documents/Readme.TXT': 20,
                  'Program Files/App/' + BROKEN: 1, 'Program Files/App/' + HOSTILE: 2,
                  b'Program Files/App/\xff\xe2\x82.bin': 3})
    for old, new in (('1.0', '1.1'), ('00000001', '0000002a'), ('hex:00,01,02,03\n', 'hex:00,01,ff,03\n'), ('two', 'zwei'), ('xA', 'xB'),
                     ('[Software\\\\Gone]\n@="x"', ''), (',00\n"long', ',01\n"long')):
        assert old in system
        system = system.replace(old, new)
    return files, system + r'''
[Software\\App\\</script><script>alert(1)</script>]
"name\x202e<!--"="\x202e\x200b line\r\n\ttab </title>"
"plain"=dword:000000ff
[Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\App]
"DisplayName"="App"
'''


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix='delvane-page-')
        cls.addClassCleanup(shutil.rmtree, cls.folder, True)
        cls.machine = machine = Machine(PROGRAM, os.path.join(cls.folder, 'machine'))
        machine.take('Before', *before())
        machine.take('After', *after())
        results = os.path.join(machine.home, 'Results')
        with open(os.path.join(results, 'Before.gaps.jsonl'), 'w', encoding='utf-8') as file:
            file.write(json.dumps({'record': 'gap', 'snapshot': 'Before', 'kind': 'directory', 'path': 'C:\\Tools',
                                   'code': 5, 'reason': 'access denied'}) + '\n')
        accept = os.path.join(cls.folder, 'list.toml')
        with open(accept, 'w', encoding='utf-8') as file:
            file.write("[[accept]]\npath = 'C:\\users\\**'\nreason = 'seen <i>'\n"
                       "[[accept]]\nfinding = 'user-settings-changed'\nreason = 'x'\n")
        cls.path = machine.review('Before', 'After', '--write', 'html,jsonl', '--accept', accept)
        cls.page = 'file://' + urllib.parse.quote(cls.path)
        with open(cls.path, encoding='utf-8', newline='') as file:
            cls.text = file.read()
        with open(cls.path[:-4] + 'jsonl', encoding='utf-8') as file:
            cls.lines = [json.loads(line) for line in file]
        cls.changes = {f"c{line['id']}": line for line in cls.lines if line['record'] == 'change'}
        cls.findings = {f"f{line['id']}": line for line in cls.lines if line['record'] == 'finding'}
        cls.browser = Browser(CHROMIUM)
        cls.addClassCleanup(cls.browser.close)

    def open(self, address='', **how):
        self.browser.show(**how)
        self.browser.open((self.page if '://' not in address else '') + address)

    def id_of(self, **fields):
        found = [key for key, line in self.changes.items() if all(line.get(k) == v for k, v in fields.items())]
        self.assertEqual(len(found), 1, (fields, found))
        return found[0]

    def search(self, text):
        self.browser.run("document.querySelector('input[type=search]').focus(), "
                         "document.querySelector('input[type=search]').select()")
        self.browser.call('Input.insertText', text=text)

    def choose(self, name, value):
        self.browser.run(f"document.querySelector('[data-filter={name}][value=\"{value}\"]').click()")

    def expect(self, ids):
        """These changes can be seen, and the status tells their number."""
        self.assertEqual(sorted(self.browser.run(SHOWN)), sorted(ids))
        self.assertRegex(self.browser.run(STATUS), rf'^{len(ids)} of {len(self.changes)} change')

    def test_source_is_safe(self):
        self.assertIsNone(INVISIBLE.search(self.text))
        self.assertNotRegex(self.text, r'(?i)\sstyle=|<[^>]*\son[a-z]+\s*=[^>]*>|data:|https?:')
        policy = re.search('http-equiv="Content-Security-Policy" content="([^"]*)"', self.text)[1]
        parts = dict(part.split(' ', 1) for part in policy.split('; '))
        for name in ('default-src', 'base-uri', 'form-action'):
            self.assertEqual(parts.pop(name), "'none'")
        self.assertEqual(sorted(parts), ['script-src', 'style-src'])
        ids = re.findall(r'\sid="([^"]*)"', self.text)
        self.assertEqual(len(ids), len(set(ids)))
        self.assertEqual({i for i in ids if re.match(r'[cf]\d', i)}, set(self.changes) | set(self.findings))
        self.assertEqual(self.text.count('type="search"'), 1)

    def test_nothing_breaks_out(self):
        self.open()
        self.assertEqual([e for e in self.browser.events if e.get('method') in ('Log.entryAdded', 'Runtime.exceptionThrown')
                          or e.get('method') == 'Network.requestWillBeSent' and not
                          e['params']['request']['url'].startswith('file:')], [])
        self.assertEqual(self.browser.run("document.querySelectorAll('img, script, style, title').length"), 3)
        for key, line in self.changes.items():
            marked = INVISIBLE.sub(lambda m: f'U+{ord(m[0]):04X}', line['path']).replace('\t', 'U+0009').replace('\n', 'U+000A')
            self.assertEqual(self.browser.run(f"document.querySelector('#{key} code').textContent"), marked)
        bytes_name = next(l for l in self.changes.values() if l['path'].endswith('.bin'))
        self.assertTrue(bytes_name['path'].endswith('\\\ufffd\ufffd.bin') and bytes_name['lossy'])

    def test_without_script_and_style(self):
        handler = functools.partial(http.server.SimpleHTTPRequestHandler, directory=os.path.dirname(self.path))
        handler.log_message = lambda *_: None

        class Strict(http.server.SimpleHTTPRequestHandler):
            def __init__(self, *arguments):
                super().__init__(*arguments, directory=os.path.dirname(Page.path))

            def end_headers(self):
                self.send_header('Content-Security-Policy', "default-src 'self'; style-src 'self'; script-src 'self'")
                super().end_headers()

            def log_message(self, *_):
                pass

        server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), Strict)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.shutdown)
        strict = f'http://127.0.0.1:{server.server_port}/' + urllib.parse.quote(os.path.basename(self.path))
        for address, script in (('', False), (strict, True)):
            self.open(address, script=script)
            self.browser.show()
            state = self.browser.run("({tools: [...document.querySelectorAll('input, button')].some(e => e.checkVisibility()),"
                                     "text: document.body.textContent, sheets: document.styleSheets.length})")
            self.assertFalse(state['tools'], address)
            self.assertEqual(state['sheets'] != 0, script is False)
            for line in (*self.changes.values(), *self.findings.values()):
                self.assertIn(INVISIBLE.sub(lambda m: f'U+{ord(m[0]):04X}', line.get('text') or line['path'].replace(
                    '\t', '\x01').replace('\n', '\x01')).replace('U+0001', ''), state['text'].replace('U+0009', '').replace(
                        'U+000A', '').replace('U+0001', ''))

    def test_search(self):
        self.open()
        self.expect(self.changes_after_open_all())
        self.search('readme.txt')
        self.expect([self.id_of(path='C:\\users\\me\\Documents\\Readme.TXT')])
        self.search('NUMBER')
        self.expect([self.id_of(kind='value', name='number')])
        self.search('.*')
        self.expect([])
        self.search('outside of the program')
        self.assertEqual(self.browser.run("[...document.querySelectorAll('.findings > li')].filter(e => e.checkVisibility())"
                                          ".map(e => e.id)"), [k for k, f in self.findings.items() if f['rule'] == 'files-outside'])
        self.browser.wait("location.search.includes('q=outside')")
        self.search('')
        self.browser.key('Backspace')

    def changes_after_open_all(self):
        self.browser.run("document.querySelector('[data-action=open-all]').click()")
        return list(self.changes)

    def test_filters(self):
        def by(**wanted):
            keys = []
            behind = {i for f in self.findings.values() if str(f['requirement']) in wanted.get('requirement', ()) for i in f['changes']}
            for key, line in self.changes.items():
                if all((set(line.get('areas', [])) if name == 'area' else {line[name]}) & set(values)
                       for name, values in wanted.items() if name != 'requirement'):
                    if 'requirement' not in wanted or line['id'] in behind:
                        keys.append(key)
            return keys

        cases = [{'kind': ['file']}, {'kind': ['key', 'value'], 'change': ['added']}, {'area': ['app-data']}, {'area': ['outside']},
                 {'status': ['accepted']}, {'status': ['open'], 'area': ['start-menu']}, {'requirement': ['5']},
                 {'requirement': ['1', '6'], 'change': ['added']}]
        for case in cases:
            with self.subTest(case):
                self.open()
                self.changes_after_open_all()
                for name, values in case.items():
                    for value in values:
                        self.choose(name, value)
                self.expect(by(**case))
                address = '?' + '&'.join(f"{name}={','.join(values)}" for name, values in case.items())
                self.open(address + '#f1')
                self.expect(by(**case))
                self.assertEqual(self.browser.run('location.hash'), '#f1')
        self.choose('kind', 'extension')
        self.browser.wait("location.search.includes('kind=extension')")
        self.assertEqual(self.browser.run('location.hash'), '#f1')
        for address in ('?kind=nonsense&area=%E0%A4%A&q=#%E0%A4', '?status=OPEN&requirement=9,-1#c999999', '?change=__proto__#c0x1'):
            self.open(address)
            self.assertRegex(self.browser.run(STATUS), rf'^{len(self.changes)} of')

    def test_links_and_groups(self):
        key = self.id_of(kind='value', name='number')
        for script in (True, False):
            self.open('#' + key, script=script)
            self.browser.wait(f"(r => r.top >= 0 && r.bottom <= innerHeight)(document.querySelector('#{key}').getBoundingClientRect())")
            self.assertTrue(self.browser.run(f"document.querySelector('#{key}').checkVisibility()"))
        self.open()
        self.choose('kind', 'file')
        self.browser.run(f"location.hash = '{key}'")
        self.browser.wait(f"document.querySelector('#{key}').checkVisibility()")
        closed = "document.querySelectorAll('main details:not([open])').length"
        self.browser.run("document.querySelector('[data-action=close-all]').click()")
        self.assertEqual(self.browser.run("document.querySelectorAll('main details[open]').length"), 0)
        self.assertGreater(len(self.browser.paper()), 20000)
        self.assertGreater(self.browser.run(closed), 5)  # as it was before it went to paper
        self.browser.run("dispatchEvent(new Event('beforeprint'))")
        self.assertEqual(self.browser.run(closed), 0)

    def test_copy(self):
        self.open()
        self.browser.run("globalThis.copied = [], navigator.clipboard.writeText = async (text) => { copied.push(text); }")
        for key, line in self.changes.items():
            self.browser.wait(f"!!document.querySelector('#{key} [data-action=copy]')")
            self.browser.run(f"document.querySelector('#{key} [data-action=copy]').click()")
            self.assertEqual(self.browser.run('copied.pop()'), line['path'])

    def test_values(self):
        self.open()
        self.changes_after_open_all()

        def sides(name):
            key = self.id_of(kind='value', name=name)
            return self.browser.run(f"""[...document.querySelectorAll('#{key} .sides > div')].map(side => ({{
                text: side.textContent, x: side.getBoundingClientRect().x, y: side.getBoundingClientRect().y,
                marks: [...side.querySelectorAll('del, ins')].map(e => e.tagName + ' ' + e.textContent),
                rest: side.querySelector('details')?.textContent}}))""")

        old, new = sides('text')
        self.assertEqual((old['marks'], new['marks']), (['DEL 0'], ['INS 1']))
        self.assertIn('version 1.1 of € <b>', new['text'])
        self.assertTrue(old['y'] == new['y'] and old['x'] < new['x'], 'side by side')
        old, new = sides('number')
        self.assertEqual((old['marks'], new['marks']), (['DEL 0x00000001 (1)'], ['INS 0x0000002a (42)']))
        old, new = sides('short')
        self.assertEqual((old['marks'], new['marks']), (['DEL 02', 'DEL .'], ['INS ff', 'INS .']))
        self.assertIn('0000  00 01 ff 03' + ' ' * 39 + '....', new['text'])
        old, new = sides('long')
        self.assertIn('x' * 900 + 'B' + 'y' * 900, new['rest'])
        self.assertLess(len(old['text']) - len(old['rest']), 600)
        old, new = sides('big')
        self.assertEqual(new['marks'][:2], ['INS 01', 'INS .'])
        self.assertEqual(len(re.findall(r'(?m)(?:^|bytes)[0-9a-f]{4}  ', new['rest'])), 251)
        old, new = sides('multi')
        self.assertEqual((old['marks'], new['marks']), (['DEL two'], ['INS zwei']))
        hostile = next(k for k, l in self.changes.items() if l.get('name', '').startswith('name'))
        self.assertIn('U+202EU+200B lineU+000D\n\ttab </title>', self.browser.run(f"document.querySelector('#{hostile}').textContent"))
        self.assertIn('0x000000ff (255)', self.browser.run(f"document.querySelector('#{self.id_of(name='plain')}').textContent"))
        uncertain = self.browser.run("[...document.querySelectorAll('li[id^=c]')].filter(e => /uncertain/.test(e.textContent)).map(e => e.id)")
        self.assertEqual(sorted(uncertain), sorted(k for k, l in self.changes.items() if l.get('uncertain')))
        self.assertEqual(len(uncertain), 2)

    def test_shapes_of_the_window(self):
        for scheme in ('light', 'dark'):
            for width in (360, 999, 1280, 2560):
                self.open(width=width, scheme=scheme)
                self.changes_after_open_all()
                self.assertEqual(self.browser.run('document.documentElement.scrollWidth'), width)
                if AXE:
                    with open(AXE, encoding='utf-8') as file:
                        self.browser.run(file.read() + ';0')
                    found = self.browser.run("axe.run().then(r => r.violations.map(v => [v.impact, v.id, v.nodes.slice(0, 3).map(n => n.html)]))")
                    self.assertEqual([v for v in found if v[0] in ('serious', 'critical')], [], (scheme, width))

    def test_keyboard(self):
        self.open()
        self.browser.key('/')
        self.assertEqual(self.browser.run('document.activeElement.type'), 'search')
        self.browser.run("document.querySelector('.group summary').focus()")
        was = self.browser.run("document.querySelector('.group').open")
        self.browser.key('Enter')
        self.browser.wait(f"document.querySelector('.group').open !== {str(was).lower()}")

    def test_limit_and_size(self):
        def values(word):
            return '[Software\\\\Many]\n' + ''.join(f'"{word} {i:05}"="data of {i}"\n' for i in range(10000))
        self.machine.take('Few', *before())
        files, system = before()
        self.machine.take('Many', files, system + values('value'), values('own'))
        whole = self.machine.review('Few', 'Many', '--limit', '100000')
        seconds = self.browser.open('file://' + urllib.parse.quote(whole))
        self.assertLess(seconds, 10)
        self.search('VALUE 04321')
        total = int(re.match('^1 of (\\d+) changes', self.browser.run(STATUS))[1])
        self.assertGreaterEqual(total, 20002)
        number = self.browser.run(SHOWN)[0]
        cut = self.machine.review('Few', 'Many', '--limit', '20')
        self.browser.open('file://' + urllib.parse.quote(cut))
        text = self.browser.run('document.body.textContent')
        for words in (f'{total} in all, of which 19960 are left out', '10000 in all, 9980 left out'):
            self.assertIn(words, text)
        self.assertIsNone(self.browser.run(f"document.getElementById('{number}')"))


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1], verbosity=1)
