// Finds the packages of package.json: modules have no search path, and these are not in a folder above them.
import { createRequire } from 'node:module';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';

const folder = process.env.ZRML_NODE_FOLDER;  // scripts/lib.sh installs them there
const { resolve } = createRequire(join(folder, 'package.json'));

/** The package called `name`, as import() gives it. */
export const load = (name) => import(pathToFileURL(resolve(name)).href);
