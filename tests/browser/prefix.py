"""A small machine in the form of a Wine prefix, its snapshots, and their review."""
import os
import shutil
import subprocess

SYSTEM = r'''
[Software\\Microsoft\\Windows NT\\CurrentVersion]
"CurrentVersion"="6.1"
"SystemRoot"="C:\\windows"
[Software\\Microsoft\\Windows\\CurrentVersion]
"ProgramFilesDir"="C:\\Program Files"
[System\\CurrentControlSet\\Control\\ComputerName\\ComputerName]
"ComputerName"="BENCH"
'''
USER = r'''
[Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders]
"AppData"="C:\\users\\me\\AppData"
"Personal"="C:\\users\\me\\Documents"
"Start Menu"="C:\\users\\me\\AppData\\Start Menu"
[Volatile Environment]
"USERNAME"="me"
'''


class Machine:
    """What it holds is given anew for each snapshot: sizes of files by path, and texts of the registry."""

    def __init__(self, program, folder):
        self.program, self.folder = program, folder
        self.home = os.path.join(folder, 'home')
        os.makedirs(self.home)

    def run(self, *arguments):
        environment = dict(os.environ, DELVANE_MACHINE=os.path.join(self.folder, 'prefix'), DELVANE_HOME=self.home,
                           DELVANE_USER='me')
        return subprocess.run([self.program, *arguments], env=environment, capture_output=True, check=False)

    def take(self, name, files, system='', user=''):
        prefix = os.path.join(self.folder, 'prefix')
        shutil.rmtree(prefix, ignore_errors=True)
        os.makedirs(os.path.join(prefix, 'dosdevices'))
        os.symlink('../drive_c', os.path.join(prefix, 'dosdevices/c:'))
        for path in ('windows', 'Program Files', 'users/me'):
            os.makedirs(os.path.join(prefix, 'drive_c', path))
        for path, size in files.items():
            path = os.path.join(os.fsencode(prefix), b'drive_c', os.fsencode(path))
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, 'wb') as file:
                file.truncate(size)
        for name_of, text in (('system.reg', SYSTEM + system), ('user.reg', USER + user)):
            with open(os.path.join(prefix, name_of), 'w', encoding='utf-8', errors='surrogateescape') as file:
                file.write('WINE REGISTRY Version 2\n' + text)
        done = self.run('/s', '/bc:' + name)
        assert os.path.exists(os.path.join(self.home, 'Results', name + '.dvs')), done
        return name

    def review(self, baseline, current, *options):
        """The path of the page."""
        done = self.run('review', baseline, current, *options)
        assert done.returncode in (0, 1), done
        return os.path.join(self.home, 'Results', f'{current} - {baseline}.review.html')
