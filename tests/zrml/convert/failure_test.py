"""failure_test.py ZRML LONG SHORT WORK FAILING_DISK SLOW_DISK SAMPLE: what a conversion leaves behind when it is killed, interrupted, or cannot write or read.

The target is either the whole file or missing, and there are no other files.
"""
import fcntl
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import termios
import time

from mzml_file import require


class Conversions:
    def __init__(self, zrml, source, work):
        self.command = [zrml, 'convert', source, '-q', '--threads', '2', '-o']
        self.file_name = pathlib.Path(source).stem + '.mzML'
        self.work = work

    def run_undisturbed(self):
        began = time.monotonic()
        self.reference = self.run('reference').target.read_bytes()
        self.seconds = time.monotonic() - began

    def start(self, name, *options, **more):
        folder = self.work / name
        folder.mkdir(parents=True)
        process = subprocess.Popen([*self.command, str(folder), *options], stderr=subprocess.PIPE, **more)
        process.folder = folder
        process.target = folder / self.file_name
        return process

    def run(self, name, *options, **more):
        process = self.start(name, *options, **more)
        self.finish(process)
        return process

    @staticmethod
    def finish(process):
        process.errors = process.communicate()[1].decode()


def names(folder):
    return sorted(p.name for p in folder.iterdir())


def has_unnamed_files(folder):
    try:
        os.close(os.open(folder, os.O_TMPFILE | os.O_WRONLY))
        return True
    except OSError:
        return False


def writes(process):
    """Whether it has an unnamed or temporary file open in its folder and has written to it."""
    for file in pathlib.Path(f'/proc/{process.pid}/fd').iterdir():
        try:
            if os.readlink(file).startswith((f'{process.folder}/#', f'{process.folder}/.zrml-')) and file.stat().st_size > 0:
                return True
        except OSError:  # closed in the meantime
            pass
    return False


def wait_until_it_writes(process):
    while not writes(process):
        require(process.poll() is None, 'it has never written')
        time.sleep(0.001)


def test_killed_while_it_writes(conversions):
    for options in ([], ['--force']):
        process = conversions.start(f'killed-{len(options)}', *options)
        wait_until_it_writes(process)
        process.kill()
        conversions.finish(process)
        require(process.returncode == -signal.SIGKILL, f'it ended with {process.returncode}')
        is_clean = names(process.folder) == [] or not has_unnamed_files(process.folder)
        require(is_clean, f'it left {names(process.folder)}')


def test_killed_at_random(conversions):
    moments = random.Random(20261114)
    early = 0
    for i in range(15):
        process = conversions.start(f'killed-{i}')
        time.sleep(moments.uniform(0, 1.1 * conversions.seconds))
        process.kill()
        conversions.finish(process)
        is_clean = names(process.folder) in ([], [process.target.name]) or not has_unnamed_files(process.folder)
        require(is_clean, f'kill {i} left {names(process.folder)}')
        if process.target.exists():
            require(process.target.read_bytes() == conversions.reference, f'a part of the file after kill {i}')
        else:
            early += 1
    require(early > 0, 'every conversion was done before it was killed')


def test_interrupted(conversions):
    def no_core():
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT, signal.SIGXCPU):
        process = conversions.start(f'interrupted-{number.name}', preexec_fn=no_core)
        wait_until_it_writes(process)
        process.send_signal(number)
        conversions.finish(process)
        require(process.returncode == -number, f'{number.name} ended it with {process.returncode}')
        require(names(process.folder) == [], f'{number.name} left {names(process.folder)}')


def test_interrupted_on_a_slow_disk(conversions, slow_disk):
    """While it opens, looks for damage, plans, reads: the current disk access finishes, and no more follow."""
    conversions.work.mkdir(parents=True)
    answers = []
    for reads in (1, 5, 20, 60, 120, 200):
        log = conversions.work / f'slow-{reads}.log'
        log.touch()
        environment = {**os.environ, 'LD_PRELOAD': slow_disk, 'ZRML_DISK_LOG': str(log)}
        process = conversions.start(f'slow-{reads}', env=environment)
        while log.stat().st_size < reads:
            require(process.poll() is None, f'it has ended with {process.returncode}')
            time.sleep(0.001)
        before = log.stat().st_size
        process.send_signal(signal.SIGINT)
        conversions.finish(process)
        require(process.returncode == -signal.SIGINT, f'SIGINT ended it with {process.returncode}')
        require(names(process.folder) == [], f'SIGINT left {names(process.folder)}')
        answers.append(log.stat().st_size - before)
    require(max(answers) <= 6, f'reads after the signal: {answers}')  # three threads, each reading and beginning one more


def test_threads_are_the_total(zrml, source, slow_disk, log):
    """While it reads files for their checksums and while it converts; each read takes long enough to be seen."""
    log.touch()
    environment = {**os.environ, 'LD_PRELOAD': slow_disk, 'ZRML_DISK_LOG': str(log)}
    seen = set()
    with subprocess.Popen([zrml, 'convert', source, '--stdout', '--threads', '3'], stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, env=environment) as process:
        while log.stat().st_size < 300:
            require(process.poll() is None, f'it has ended with {process.returncode}')
            seen.add(len(os.listdir(f'/proc/{process.pid}/task')))
            time.sleep(0.001)
        process.send_signal(signal.SIGINT)
    require(max(seen) == 3, f'{seen} threads are seen')


def test_check_interrupted(zrml, source, slow_disk, log):
    """At a terminal it shows how far it is, and leaves an empty line."""
    terminal, end = os.openpty()
    environment = {**os.environ, 'LD_PRELOAD': slow_disk, 'ZRML_DISK_LOG': str(log)}
    log.touch()
    process = subprocess.Popen([zrml, 'check', source], stderr=end, stdout=subprocess.PIPE, env=environment)
    os.close(end)
    shown = b''
    while b'%' not in shown:
        require(process.poll() is None, f'it has ended with {process.returncode}')
        shown += os.read(terminal, 4096)
    process.send_signal(signal.SIGINT)
    output = process.communicate()[0]
    require(process.returncode == -signal.SIGINT and output == b'', f'SIGINT ended it with {process.returncode}')
    shown += os.read(terminal, 4096)
    os.close(terminal)
    require(pathlib.Path(source).name.encode() in shown and shown.endswith(b'\r'), f'it has shown {shown}')


def is_blocked(process):
    """Whether it has written and now waits for its reader: it has a single thread, which sleeps."""
    waiting = fcntl.ioctl(process.stdout, termios.FIONREAD, b'\0' * 4)
    state = pathlib.Path(f'/proc/{process.pid}/stat').read_text().rsplit(')', 1)[1].split()[0]
    return waiting != b'\0' * 4 and state == 'S'


def test_interrupted_while_nobody_reads(conversions):
    command = [*conversions.command[:3], '--stdout', '--threads', '1']
    for number in (signal.SIGINT, signal.SIGTERM):
        with subprocess.Popen(command, stdout=subprocess.PIPE) as process:
            while not is_blocked(process):
                require(process.poll() is None, f'it has ended with {process.returncode}')
                time.sleep(0.001)
            process.send_signal(number)
            try:
                process.wait(timeout=60)  # a guard: otherwise it would wait forever
            except subprocess.TimeoutExpired:
                process.kill()
            require(process.returncode == -number, f'{number.name} ended it with {process.returncode}')


def test_target_made_meanwhile(conversions):
    process = conversions.start('meanwhile')
    wait_until_it_writes(process)
    process.target.write_text('of somebody else')
    conversions.finish(process)
    require(process.returncode == 5, f'status {process.returncode}')
    require(process.errors == f'zrml: {conversions.command[2]}: {process.target} exists; --force replaces it\n', process.errors)
    require(process.target.read_text() == 'of somebody else', 'it has been replaced')
    require(names(process.folder) == [process.target.name], 'other files are left')


def test_no_room(conversions):
    def limit():
        resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 20, 1 << 20))

    process = conversions.run('no-room', preexec_fn=limit)
    require(process.returncode == 5, f'status {process.returncode}')
    require(process.errors.count('\n') == 1 and 'File too large' in process.errors, process.errors)
    require(names(process.folder) == [], 'files are left')


def test_few_descriptors(conversions):
    """At any limit, the whole file or a line that says why: a source that cannot be opened is not therefore damaged."""
    succeeded = failed = 0
    for limit in range(4, 33):
        process = conversions.run(f'descriptors-{limit}',
                                  preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit)))
        if process.returncode == 0:
            require(process.target.read_bytes() == conversions.reference, f'a different file with {limit} descriptors')
            succeeded += 1
        elif process.returncode == 127:  # too few to load the program's libraries
            continue
        else:
            require(process.returncode == 5, f'status {process.returncode} with {limit} descriptors: {process.errors}')
            require('(Too many open files)\n' in process.errors and process.errors.count('\n') == 1, process.errors)
            require(names(process.folder) == [], f'{limit} descriptors leave {names(process.folder)}')
            failed += 1
    require(succeeded > 0 and failed > 0, f'{succeeded} conversions succeeded, {failed} failed')
    for command in ('check', 'info'):
        statuses = {subprocess.run([conversions.command[0], command, conversions.command[2]], capture_output=True,
                                   preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit))).returncode
                    for limit in range(4, 17)}
        require({0, 5} <= statuses <= {0, 5, 127}, f'{command} ended with {statuses}')


def test_pipe_that_does_not_wait(conversions):
    """The pipe's writing end gives EAGAIN when full, as shells may set it up."""
    command = [*conversions.command[:3], '--stdout', '--threads', '1']
    expected = subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout
    reader, writer = os.pipe()
    os.set_blocking(writer, False)
    with subprocess.Popen(command, stdout=writer, stderr=subprocess.PIPE) as process:
        os.close(writer)
        with open(reader, 'rb') as pipe:
            received = pipe.read()
        require(process.wait() == 0, f'status {process.returncode}: {process.stderr.read().decode()}')
    require(received == expected, 'the output differs')


def test_source_changed_meanwhile(conversions, source):
    """Points cut off after the files were checked would be missing, so the output must not count."""
    data = '_FUNC001.DAT'
    cases = [
        (lambda folder: os.truncate(folder / data, 60), data, []),
        (lambda folder: os.truncate(folder / data, 60), data, ['--damaged']),
        (lambda folder: os.utime(folder / data, (0, 0)), data, []),
        (lambda folder: (folder / '_spare.txt').unlink(), '_spare.txt', []),
        (lambda folder: (folder / '_FUNC002.DAT').write_text('new'), '_FUNC002.DAT', []),
        (lambda folder: (folder / 'notes.txt').write_text('new'), None, []),
        (lambda folder: None, None, []),
    ]
    for number, (change, name, options) in enumerate(cases):
        changing = conversions.work / 'changing.raw'
        shutil.rmtree(changing, ignore_errors=True)
        shutil.copytree(source, changing)
        (changing / '_spare.txt').write_text('data')
        command = [conversions.command[0], 'convert', str(changing), '--stdout', '--threads', '1', *options]
        with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            while not is_blocked(process):
                require(process.poll() is None, f'it has ended with {process.returncode}')
                time.sleep(0.001)
            change(changing)
            errors = process.communicate()[1].decode()
        problem = f'zrml: {changing}: {name} has changed during the conversion\n' if name else ''
        if name and options:  # the points that it has lost are counted, too
            problem += re.search(r'(zrml: .* that have lost points: [0-9]+ [(][-0-9, ]+[)]\n)?$', errors)[0]
        require(process.returncode == (5 if name and not options else 0), f'{number}: status {process.returncode}: {errors}')
        require(errors == problem, f'{number}: {errors}')


def test_file_that_may_not_be_read(zrml, source):
    """A file without data is left out of the source files; one with data is damage."""
    with tempfile.TemporaryDirectory() as folder:
        private = pathlib.Path(folder) / 'private.raw'
        shutil.copytree(source, private)
        shutil.copy(zrml, folder)
        (private / 'notes.txt').write_text('not for others')
        for path in (pathlib.Path(folder), *pathlib.Path(folder).rglob('*')):
            path.chmod(0o755)
        (private / 'notes.txt').chmod(0)
        command = [f'{folder}/zrml', 'convert', str(private), '--stdout', '--scans', '1']
        user = {'user': 65534} if os.geteuid() == 0 else {}  # the superuser may read everything
        result = subprocess.run(command, capture_output=True, text=True, **user)
        require(result.returncode == 0, f'status {result.returncode}: {result.stderr}')
        require(result.stderr == f'zrml: {private}: notes.txt cannot be opened\n', result.stderr)
        require('notes.txt' not in result.stdout and '_FUNC001.DAT' in result.stdout, 'the source files')
        (private / '_FUNC001.IDX').chmod(0)
        result = subprocess.run(command, capture_output=True, text=True, **user)
        require(result.returncode == 7 and '_FUNC001.IDX cannot be opened' in result.stderr, result.stderr)
        (private / '_FUNC001.IDX').chmod(0o755)
        try:
            test_folder_that_may_not_be_listed(command, private, user)
            private.chmod(0o444)  # may be listed, but its files may not be opened
            for run in (command, [command[0], 'check', str(private)], [command[0], 'info', str(private)]):
                result = subprocess.run(run, capture_output=True, text=True, **user)
                require(result.returncode == 5, f'status {result.returncode}')
                require(result.stderr == f'zrml: cannot reach what is in {private} (Permission denied)\n', result.stderr)
        finally:
            private.chmod(0o755)


def test_folder_that_may_not_be_listed(command, private, user):
    """Its files open by name: everything known by name is there, and the rest is reported as missing."""
    (private / 'notes.txt').unlink()
    whole = subprocess.run(command, capture_output=True, text=True, check=True, **user).stdout
    private.chmod(0o111)
    said = f'zrml: {private}: cannot list {private} (Permission denied), so '
    result = subprocess.run(command, capture_output=True, text=True, **user)
    require(result.returncode == 0, f'status {result.returncode}')
    require(result.stderr == said + 'its files are neither named nor watched\n', result.stderr)
    require('<sourceFile ' not in result.stdout and '<sourceFile ' in whole, 'the source files')
    spectra = [text[text.index('<spectrumList '):text.index('</spectrumList>')] for text in (result.stdout, whole)]
    require(spectra[0] == spectra[1], 'other spectra')
    checked = subprocess.run([command[0], 'check', str(private)], capture_output=True, text=True, **user)
    require(checked.returncode == 0 and ' is sound: ' in checked.stdout, checked.stdout)
    require(checked.stderr == said + 'only files that are known by name are looked at\n', checked.stderr)


def test_scan_past_the_end(conversions, source):
    damaged = conversions.work / 'damaged.raw'
    shutil.copytree(source, damaged)
    data = damaged / '_FUNC001.DAT'
    with data.open('r+b') as file:
        file.truncate(6 * 4000)  # 4,000 scans of one point of 6 bytes
    conversions.command[2] = str(damaged)
    process = conversions.run('damaged-out')
    require(process.returncode == 7, f'status {process.returncode}')
    problem = '_FUNC001.DAT ends before 2000 of 6000 scans do; the first is scan 4001'
    option = '(--damaged converts what there is)'
    require(process.errors == f'zrml: {damaged} is damaged: {problem} {option}\n', process.errors)
    require(names(process.folder) == [], 'files are left')
    process = conversions.run('damaged-anyway', '--damaged')
    require(process.returncode == 0 and names(process.folder) == ['damaged.mzML'], process.errors)


def test_failing_disk(conversions, failing_disk):
    """A failed read must not count as an empty spectrum."""
    environment = {**os.environ, 'LD_PRELOAD': failing_disk}
    problem = '_FUNC001.DAT cannot be read to its end (Input/output error)'
    source = conversions.command[2]
    for form in ('mzml', 'tsv'):
        process = conversions.run(f'disk-{form}', '--format', form, env=environment)
        require(process.returncode == 5, f'status {process.returncode}')
        require(process.errors == f'zrml: {source}: {problem}\n', process.errors)
        require(names(process.folder) == [], 'files are left')
    process = conversions.run('disk-damaged', '--damaged', env=environment)
    require(process.returncode == 0 and process.errors == '', process.errors)  # quiet
    require(b'name="_FUNC001.DAT"' not in process.target.read_bytes()[:10000], 'a checksum of a part')
    checked = subprocess.run([conversions.command[0], 'check', source], capture_output=True, text=True, env=environment)
    require(checked.returncode == 7 and f'lost: {problem}' in checked.stdout.splitlines(), checked.stdout)


def main(zrml, long_source, source, work, failing_disk, slow_disk, sample):
    work = pathlib.Path(work)
    shutil.rmtree(work, ignore_errors=True)
    long_conversions = Conversions(zrml, long_source, work / 'long')  # leave time to see the file grow
    test_killed_while_it_writes(long_conversions)
    test_interrupted(long_conversions)
    test_target_made_meanwhile(long_conversions)
    conversions = Conversions(zrml, source, work / 'short')
    conversions.run_undisturbed()
    test_killed_at_random(conversions)
    test_interrupted_while_nobody_reads(conversions)
    test_no_room(conversions)
    test_few_descriptors(conversions)
    test_pipe_that_does_not_wait(conversions)
    test_failing_disk(conversions, failing_disk)
    test_check_interrupted(zrml, sample, slow_disk, work / 'check.log')
    test_threads_are_the_total(zrml, sample, slow_disk, work / 'threads.log')
    test_interrupted_on_a_slow_disk(Conversions(zrml, sample, work / 'sample'), slow_disk)
    test_source_changed_meanwhile(conversions, source)
    test_file_that_may_not_be_read(zrml, source)
    test_scan_past_the_end(conversions, source)


if __name__ == '__main__':
    main(*sys.argv[1:])
