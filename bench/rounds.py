"""rounds.py ROUNDS COMMAND [-- COMMAND]...: how long commands take, in seconds, run in turns so that a busy machine slows all of them.

Prints a line for each: the medians of the time on the clock and of the processors' time, then the fewest and the most of the
clock.
"""
import os
import statistics
import subprocess
import sys
import time


def measured(command):
    began = time.perf_counter()
    with subprocess.Popen(command, stdout=subprocess.DEVNULL) as process:
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f'{command[0]} ended with {process.returncode}')
    return time.perf_counter() - began, usage.ru_utime + usage.ru_stime


def commands_of(words):
    commands = [[]]
    for word in words:
        if word == '--':
            commands.append([])
        else:
            commands[-1].append(word)
    return commands


def main(rounds, *words):
    commands = commands_of(words)
    times = [[] for _ in commands]
    for _ in range(int(rounds)):
        for command, own in zip(commands, times):
            own.append(measured(command))
    for own in times:
        clock, processors = zip(*own)
        print(f'{statistics.median(clock):.4f} {statistics.median(processors):.4f} {min(clock):.4f} {max(clock):.4f}')


main(*sys.argv[1:])
