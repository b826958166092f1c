"""Chromium without a window, driven over a pipe by its own protocol: nothing but Python is needed for it."""
import base64
import itertools
import json
import os
import subprocess
import tempfile
import time


class Browser:
    def __init__(self, program='chromium'):
        self.profile = tempfile.TemporaryDirectory()
        read_ours, write_theirs = os.pipe()
        read_theirs, write_ours = os.pipe()

        def give_pipes():  # the browser reads from 3 and writes to 4
            ends = [os.dup(read_theirs), os.dup(write_theirs)]
            os.dup2(ends[0], 3)
            os.dup2(ends[1], 4)

        flags = ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--hide-scrollbars',
                 '--disable-background-networking', '--disable-component-update', '--disable-sync',
                 '--remote-debugging-pipe', '--user-data-dir=' + self.profile.name]
        self.process = subprocess.Popen([program, *flags, 'about:blank'], preexec_fn=give_pipes, close_fds=False,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(read_theirs)
        os.close(write_theirs)
        self.reader, self.writer = os.fdopen(read_ours, 'rb'), os.fdopen(write_ours, 'wb')
        self.numbers, self.buffer, self.events = itertools.count(1), b'', []
        targets = self.call('Target.getTargets', session=None)['targetInfos']
        target = next(t['targetId'] for t in targets if t['type'] == 'page')
        self.session = self.call('Target.attachToTarget', session=None, targetId=target, flatten=True)['sessionId']
        for domain in ('Page', 'Runtime', 'Network', 'Log'):
            self.call(domain + '.enable')

    def close(self):
        self.call('Browser.close', session=None)
        self.process.wait(30)
        self.profile.cleanup()

    def receive(self):
        while b'\0' not in self.buffer:
            part = self.reader.read1(1 << 20)
            assert part, 'the browser went away'
            self.buffer += part
        message, self.buffer = self.buffer.split(b'\0', 1)
        return json.loads(message)

    def call(self, method, session='', **parameters):
        number = next(self.numbers)
        message = {'id': number, 'method': method, 'params': parameters}
        if session == '':
            message['sessionId'] = self.session
        self.writer.write(json.dumps(message).encode() + b'\0')
        self.writer.flush()
        while True:
            answer = self.receive()
            if answer.get('id') == number:
                assert 'error' not in answer, (method, answer)
                return answer['result']
            self.events.append(answer)

    def run(self, script):
        """The value of an expression, awaited."""
        answer = self.call('Runtime.evaluate', expression=script, returnByValue=True, awaitPromise=True, userGesture=True)
        assert 'exceptionDetails' not in answer, (script, answer['exceptionDetails'])
        return answer['result'].get('value')

    def wait(self, script, seconds=10):
        """Until the expression is true."""
        end = time.monotonic() + seconds
        while not (value := self.run(script)):
            assert time.monotonic() < end, 'never came true: ' + script
            time.sleep(0.02)
        return value

    def open(self, address):
        """Gives the seconds until the page was loaded."""
        self.navigate('about:blank')
        begin = time.monotonic()
        self.navigate(address)
        return time.monotonic() - begin

    def navigate(self, address):
        self.events.clear()
        self.call('Page.navigate', url=address)
        while not any(event.get('method') == 'Page.loadEventFired' for event in self.events):
            self.events.append(self.receive())

    def show(self, width=1280, height=900, scheme='light', media='', script=True):
        self.call('Emulation.setDeviceMetricsOverride', width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.call('Emulation.setEmulatedMedia', media=media, features=[{'name': 'prefers-color-scheme', 'value': scheme}])
        self.call('Emulation.setScriptExecutionDisabled', value=not script)

    def key(self, key, text=None):
        code = {'Tab': 9, 'Enter': 13, ' ': 32, 'Escape': 27}.get(key, ord(key[0].upper()))
        text = {'Enter': '\r', 'Tab': None}.get(key, text or (key if len(key) == 1 else None))
        extra = {'text': text} if text else {}
        self.call('Input.dispatchKeyEvent', type='keyDown', key=key, windowsVirtualKeyCode=code, **extra)
        self.call('Input.dispatchKeyEvent', type='keyUp', key=key, windowsVirtualKeyCode=code)

    def picture(self, path, whole=False):
        answer = self.call('Page.captureScreenshot', format='png', captureBeyondViewport=whole)
        with open(path, 'wb') as file:
            file.write(base64.b64decode(answer['data']))

    def paper(self):
        return base64.b64decode(self.call('Page.printToPDF', printBackground=True)['data'])
