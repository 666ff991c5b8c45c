"""batch_test.py ZRML CALLS ONE-SCAN.raw WORK: many sources at once.

What is printed and written does not depend on the number of threads; the log is true, also after an interruption and on a full
disk; a list may come from any program; for many sources memory stays flat, and the system is asked as much for each. CALLS is the library of counted_calls.cpp.
"""
import json
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import sys
import time

zrml, calls, one_scan, work = sys.argv[1:]
one_scan, work = pathlib.Path(one_scan).resolve(), pathlib.Path(work)


def require(condition, message):
    if not condition:
        sys.exit(f'batch_test.py: {message}')


def sources(name, count):
    """A file that lists `count` sources, links to the same one, each by a name of its own."""
    folder = work / name
    folder.mkdir()
    paths = [folder / f'run{i}.raw' for i in range(count)]
    for path in paths:
        path.symlink_to(one_scan)
    listed = work / f'{name}.txt'
    listed.write_text(''.join(f'{path}\n' for path in paths))
    return listed


def convert(listed, out, *options, **settings):
    return subprocess.run([zrml, 'convert', '--from', listed, '-o', out, '--format', 'tsv', *options],
                          capture_output=True, text=True, **settings)


def content(folder):
    return {path.name: path.read_bytes() for path in folder.iterdir()}


def log_of(path):
    return [json.loads(line) for line in path.read_text().splitlines()]


def check_threads():
    listed = sources('some', 40)
    same = work / 'other' / 'run7.raw'
    same.parent.mkdir()
    shutil.copytree(one_scan, same)
    with listed.open('a') as file:
        file.write(f'{work}/gone.raw\n{same}\n')
    runs = []
    for threads in ('1', '2', '7'):
        out, log = work / 'out', work / f'log{threads}'
        shutil.rmtree(out, ignore_errors=True)
        result = convert(listed, out, '--threads', threads, '--log', log)
        require(result.returncode == 8, f'status {result.returncode}')
        lines = sorted(((line['source'], line['target'], line['status'], line['reason'], line['findings'])
                        for line in log_of(log)), key=str)
        runs.append((result.stdout, result.stderr, content(out), lines))
    require(runs[0] == runs[1] == runs[2], 'threads change what is printed, written or logged')
    printed, errors, files, lines = runs[0]
    require(printed.splitlines() == [f'{work}/out/run{i}.tsv' for i in range(40)], printed)
    gone = f'there is no file or folder {work}/gone.raw'
    taken = f'{same} would replace {work}/out/run7.tsv, already written from another source'
    failed = f'2 of 42 sources are not converted: {work}/gone.raw, {same}'
    require(errors == f'zrml: {gone}\nzrml: {taken}\nzrml: {failed}\n', errors)
    require(len(files) == 40 and len(set(files.values())) == 1, 'the files differ')
    wanted = [(f'{work}/some/run{i}.raw', f'{work}/out/run{i}.tsv', 'done', None, []) for i in range(40)]
    wanted += [(f'{work}/gone.raw', None, 'failed', gone, []), (f'{same}', None, 'failed', taken, [])]
    require(lines == sorted(wanted, key=str), lines)
    again = convert(listed, work / 'out', '--skip-existing', '--log', work / 'log2')
    require(again.stdout == '', again.stdout)
    statuses = [line['status'] for line in log_of(work / 'log2')]
    require(len(statuses) == 84 and statuses[42:].count('skipped') == 40, f'{statuses}')


def check_interruption():
    listed, out, log = sources('long', 10000), work / 'interrupted', work / 'interrupted.log'
    with subprocess.Popen([zrml, 'convert', '--from', listed, '-o', out, '--format', 'tsv', '--threads', '2', '--log', log],
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE) as run:
        while run.poll() is None and (not log.exists() or log.read_bytes().count(b'\n') < 20):
            time.sleep(0.001)
        run.send_signal(signal.SIGINT)
        errors = run.stderr.read()
    require(run.returncode == -signal.SIGINT, f'status {run.returncode}: {errors}')
    lines = log_of(log)
    done = [pathlib.Path(line['target']).name for line in lines if line['status'] == 'done']
    require(20 <= len(done) < 10000, f'{len(done)} are done')
    require({line['status'] for line in lines} <= {'done', 'interrupted'}, 'others are logged')
    files = content(out)
    require(sorted(files) == sorted(done), 'files and log differ')
    require(set(files.values()) == {content(work / 'out')['run0.tsv']}, 'a file is not whole')


def check_lists():
    """Line ends of both systems, blank lines, a repeated source, a name with blanks and one that is no UTF-8."""
    sources('odd', 3)
    names = [b'a b.raw', b' c.raw', b'd\xFF.raw']
    folder = os.fsencode(work / 'odd')
    for i, name in enumerate(names):
        os.rename(folder + b'/run%d.raw' % i, folder + b'/' + name)
    listed = b'\r\n'.join([b'', *(folder + b'/' + name for name in names), b' \t', folder + b'/a b.raw', b''])
    out, log = work / 'odd.out', work / 'odd.log'
    result = subprocess.run([zrml, 'convert', '--from', '-', '-o', out, '--format', 'tsv', '--log', log], input=listed,
                            capture_output=True)
    said = b'zrml: ' + folder + b'/a b.raw is given twice, which is converted once\n'
    require((result.returncode, result.stderr) == (0, said), f'status {result.returncode}: {result.stderr}')
    require(sorted(os.listdir(os.fsencode(out))) == [b' c.tsv', b'a b.tsv', b'd\xFF.tsv'], os.listdir(out))
    found = sorted(line['source'] for line in log_of(log))
    require(found == sorted(f'{work}/odd/{name}' for name in ('a b.raw', ' c.raw', 'd\uFFFD.raw')), found)
    empty = subprocess.run([zrml, 'convert', '--from', '-', '-o', out], input=b' \r\n\n', capture_output=True)
    require(empty.returncode == 2 and b'there are no sources in standard input' in empty.stderr, empty.stderr)


def check_log():
    """Each line is one of JSON or not there, and what cannot be written is said beside what fails."""
    listed, out, log = sources('logged', 2), work / 'logged.out', work / 'full.log'
    kept = '{"from": "before"}\n' * 450  # 8,550 bytes
    log.write_text(kept)
    limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (len(kept) + 50, resource.RLIM_INFINITY))
    full = convert(listed, out, '--log', log, preexec_fn=limit)
    require((full.returncode, full.stderr) == (5, f'zrml: cannot write {log}\n'), f'{full}')
    require(log.read_text() == kept and len(os.listdir(out)) == 2, f'{log.stat().st_size} bytes are left')
    with listed.open('a') as file:
        file.write(f'{work}/gone.raw\n')
    full = convert(listed, work / 'logged.again', '--log', log, preexec_fn=limit)
    require(full.returncode == 8 and full.stderr.splitlines()[1:] == [
        f'zrml: cannot write {log}', f'zrml: 1 of 3 sources are not converted: {work}/gone.raw'], f'{full}')
    log.write_text(kept + '{"cut": "by a')  # what wrote this was killed
    require(convert(listed, out, '--skip-existing', '--log', log).returncode == 8, 'gone.raw is there')
    lines = log.read_text().splitlines()[450:]
    require(lines[0] == '{"cut": "by a' and [json.loads(line)['status'] for line in lines[1:]].count('skipped') == 2, lines)


def check_log_in_source():
    """A source survives its log."""
    source = work / 'written.raw'
    shutil.copytree(one_scan, source)
    before = content(source)
    for name in ('_HEADER.TXT', 'log.jsonl'):
        result = subprocess.run([zrml, 'convert', source, '-o', work / 'never', '--log', source / name], capture_output=True,
                                text=True)
        require((result.returncode, result.stderr) == (2, f'zrml: {source}/{name} is a part of the source\n'), f'{result}')
    require(content(source) == before, 'the source has changed')
    both = work / 'both.tsv'
    result = subprocess.run([zrml, 'convert', source, '-b', both, '--log', both, '--force'], capture_output=True, text=True)
    require((result.returncode, result.stderr) == (2, f'zrml: {both} is named more than once\n'), f'{result}')


def measured(count):
    """The peak of memory, in KiB, and the questions to the system, of a batch."""
    listed, out = sources(f'batch{count}', count), work / f'out{count}'
    asked = work / 'calls'
    environment = {**os.environ, 'LD_PRELOAD': calls, 'ZRML_CALLS': str(asked)}
    with subprocess.Popen([zrml, 'convert', '--from', listed, '-o', out, '--format', 'tsv', '-q', '--threads', '2'],
                          env=environment) as run:
        _, status, usage = os.wait4(run.pid, 0)
        run.returncode = status
    require(status == 0 and len(os.listdir(out)) == count, f'{count} sources: status {status}')
    return usage.ru_maxrss, int(asked.read_text().split()[0])


def check_many():
    few, some, many = (measured(count) for count in (100, 200, 10000))
    each = (some[1] - few[1]) / 100
    require(each > 5, f'{each} questions for a source')
    rest = (many[1] - some[1]) / 9800
    require(rest < 1.1 * each, f'{rest} questions for each of many sources, {each} of few')
    more = many[0] - few[0]  # paths of sources and targets, some 0.5 KiB each, a file of one is 4 KiB in memory
    require(more < 10000 * 1, f'{more} KiB more for 10,000 sources')
    print(f'{each:.1f} questions a source, of 10,000 {rest:.1f}; {more} KiB more memory')


shutil.rmtree(work, ignore_errors=True)
work.mkdir(parents=True)
check_threads()
check_interruption()
check_lists()
check_log()
check_log_in_source()
check_many()
shutil.rmtree(work)
