// Two independent readers of Parquet files: a table as an object of columns, each an array of numbers, texts and nulls.
import { readFileSync } from 'node:fs';
import { load } from './packages.mjs';

const { DuckDBInstance } = await load('@duckdb/node-api');
const { parquetMetadata, parquetRead } = await load('hyparquet');
const { compressors } = await load('hyparquet-compressors');
const connection = await (await DuckDBInstance.create(':memory:')).connect();

const plain = (value) => (typeof value === 'bigint' ? Number(value) : value ?? null);

export async function readDuck(path) {
  const result = await connection.runAndReadAll(`select * from read_parquet('${path.replaceAll("'", "''")}')`);
  const columns = result.getColumns();
  return Object.fromEntries(result.columnNames().map((name, i) => [name, (columns[i] ?? []).map(plain)]));
}

const bufferOf = (path) => {
  const { buffer, byteOffset, byteLength } = readFileSync(path);
  return buffer.slice(byteOffset, byteOffset + byteLength);
};

export const metadata = (path) => parquetMetadata(bufferOf(path));

export async function readHyparquet(path) {
  const file = bufferOf(path);
  const { schema } = parquetMetadata(file);
  const table = Object.fromEntries(schema.slice(1).map(({ name }) => [name, []]));
  const onChunk = ({ columnName, columnData, rowStart }) => {
    const column = table[columnName];
    for (let i = 0; i < columnData.length; ++i) column[rowStart + i] = plain(columnData[i]);
  };
  await parquetRead({ file, compressors, onChunk });
  return table;
}
