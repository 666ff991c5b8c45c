// parquet_test.mjs ZRML FOLDER SOURCE...: each sample as Parquet, read by two independent readers, has the values of the
// same sample as TSV and what `zrml scans` says of each scan; statistics are true; threads change nothing. So does the table
// of scans have the cells of its text.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdirSync, readFileSync, rmSync } from 'node:fs';
import { basename, join } from 'node:path';
import { readDuck, readHyparquet, metadata } from '../../node/parquet_readers.mjs';

const [zrml, folder, ...sources] = process.argv.slice(2);
const mostRows = 2 ** 20;

const run = (...command) => execFileSync(zrml, command, { encoding: 'utf8', maxBuffer: 2 ** 30 });
const read = (path) => readFileSync(path, 'utf8');

function convert(source, name, ...options) {
  const file = join(folder, name);
  rmSync(file, { force: true });
  run('convert', source, '-b', file, '-q', ...options);
  return file;
}

const special = { nan: NaN, inf: Infinity, '-inf': -Infinity };
const numberOf = (text) => special[text] ?? Number(text);

// Text has a number of single precision as the shortest decimal for that.
function isSame(value, text) {
  const number = numberOf(text);
  return value === number || Object.is(value, number) || (Math.fround(value) === value && Math.fround(number) === value);
}

// The points of TSV by "function scan": m/z and intensities as text, and the time.
function pointsOfTsv(text) {
  const scans = new Map();
  for (const line of text.split('\n').slice(1, -1)) {
    const [name, scan, time, mz, intensity] = line.split('\t');
    const key = `${name} ${scan}`;
    if (!scans.has(key)) scans.set(key, { time, points: [] });
    scans.get(key).points.push([mz, intensity]);
  }
  return scans;
}

// Absent in any row: no file has the first four, none of these sources drift bins.
const alwaysAbsent = ['isolation_lower', 'isolation_upper', 'precursor_scan', 'precursor_charge', 'ion_mobility'];

// The columns have these values in the rows from one to another.
function requireSame(table, from, to, values) {
  for (const [name, value] of Object.entries(values)) {
    const column = table[name];
    for (let row = from; row < to; ++row) if (column[row] !== value) assert.equal(column[row], value, `${name} of row ${row}`);
  }
}

// Rows of one scan stand together, in the order of TSV.
function compare(table, scans, described) {
  const left = new Map(scans);
  let lastScan = 0;
  for (let row = 0; row < table.scan.length;) {
    const key = `${table.function[row]} ${table.function_scan[row]}`;
    const { time, points } = left.get(key) ?? assert.fail(`${key} is there twice, or not in TSV`);
    left.delete(key);
    const scan = table.scan[row];
    assert.ok(scan > lastScan, `scan ${scan} follows ${lastScan}`);
    lastScan = scan;
    const { msLevel, polarity, precursorMz } = described.get(key);
    const rt = table.rt[row];
    assert.ok(rt === null ? !Number.isFinite(numberOf(time)) : isSame(rt, time), `${key}: ${rt} for ${time}`);
    const values = { function: table.function[row], function_scan: table.function_scan[row], scan, rt, polarity };
    if (msLevel !== null) values.level = msLevel;
    values.precursor_mz = precursorMz || null;
    for (const name of alwaysAbsent) values[name] = null;
    requireSame(table, row, row + points.length, values);
    for (const [mz, intensity] of points) {
      if (!isSame(table.mz[row], mz) || !isSame(table.intensity[row], intensity))
        assert.fail(`${key}: (${table.mz[row]}, ${table.intensity[row]}) for (${mz}, ${intensity})`);
      ++row;
    }
  }
  assert.equal(left.size, 0, `${[...left.keys()]} are not in the table`);
}

// The smallest and the largest of `values`, which may be texts, without NaN; and how many are absent.
function factsOf(values) {
  const facts = { absent: 0 };
  for (const value of values) {
    if (value === null) ++facts.absent;
    if (value === null || Number.isNaN(value)) continue;
    if (facts.low === undefined || value < facts.low) facts.low = value;
    if (facts.high === undefined || value > facts.high) facts.high = value;
  }
  return facts;
}

function checkStatistics(file, table, isOfPoints) {
  const { row_groups: groups, num_rows: count } = metadata(file);
  assert.equal(Number(count), table.scan.length);
  let row = 0;
  for (const group of groups) {
    const rows = Number(group.num_rows);
    assert.ok(rows > 0 && rows <= mostRows);
    for (const { meta_data: column } of group.columns) {
      const name = column.path_in_schema[0];
      const { low, high, absent } = factsOf(table[name].slice(row, row + rows));
      const { min_value, max_value, null_count } = column.statistics;
      assert.ok(min_value == low && max_value == high, `${name}: ${min_value} to ${max_value} for ${low} to ${high}`);
      assert.equal(Number(null_count), absent, name);
      assert.equal(Number(column.num_values), rows);
      if (isOfPoints && name === 'function') assert.equal(low, high, 'a row group has one function');
    }
    row += rows;
  }
  assert.equal(row, table.scan.length);
}

const nameOf = (source) => basename(source).replace(/[^a-z]/gi, '_');

async function check(source, sample) {
  const options = sample ? ['--sample', `${sample}`] : [];
  const name = nameOf(source) + (sample ?? '');
  const file = convert(source, `${name}.parquet`, '--threads', '1', ...options);
  const other = convert(source, `${name}-2.parquet`, '--threads', '3', ...options);
  assert.ok(readFileSync(file).equals(readFileSync(other)), 'threads change the file');
  const scans = pointsOfTsv(read(convert(source, `${name}.tsv`, ...options)));
  const rows = JSON.parse(run('scans', source, '--json')).scans.filter((row) => row.sample === (sample ?? 1));
  const described = new Map(rows.map((row) => [`${row.function} ${row.scan}`, row]));
  const table = await readHyparquet(file);
  checkStatistics(file, table, true);
  compare(table, scans, described);
  compare(await readDuck(file), scans, described);
  compare(await readDuck(convert(source, `${name}-plain.parquet`, '--no-zlib', ...options)), scans, described);
  console.log(`${name}: ${scans.size} scans`);
}

// The rows of text and of JSON: that has the numbers as they are, but for the source, which is of all rows there.
async function checkScans(source) {
  const file = join(folder, `${nameOf(source)}-scans.parquet`);
  run('scans', source, '--points', '-b', file, '--force');
  const [titles, ...lines] = run('scans', source, '--points').split('\n').slice(0, -1).map((line) => line.split('\t'));
  const { scans } = JSON.parse(run('scans', source, '--points', '--json'));
  assert.equal(scans.length, lines.length);
  for (const reader of [readHyparquet, readDuck]) {
    const table = await reader(file);
    assert.deepEqual(Object.keys(table), titles);
    assert.equal(table.scan.length, lines.length);
    for (const [row, cells] of lines.entries()) {
      for (const [place, name] of titles.entries()) {
        const text = cells[place] === '' ? null : cells[place];
        const isText = ['source', 'function', 'polarity'].includes(name);
        assert.equal(table[name][row], isText ? text : scans[row][name], `${name} of row ${row}`);
      }
    }
    if (reader === readHyparquet) checkStatistics(file, table, false);
  }
  assert.ok(readFileSync(file).equals(execFileSync(zrml, ['scans', source, '--points', '--format', 'parquet'], { maxBuffer: 2 ** 30 })));
}

mkdirSync(folder, { recursive: true });
for (const source of sources) {
  const { samples } = JSON.parse(run('info', source, '--json'));
  if (source.endsWith('.rpt')) for (const { number } of samples) await check(source, number);
  else await check(source);
  await checkScans(source);
}
