// What the declarations let through, and what they stop.

import {Task, TaskError, WebAPIClient, WebAPIError} from '../../client/webapi.mjs';

export async function use(client: WebAPIClient, file: File, error: unknown): Promise<void> {
  const {lines} = await client.call<{lines: string[]}>('A', 1, 'b', {times: 2, none: undefined});
  // @ts-expect-error A version is a number.
  await client.call('A', '1', 'b');
  // @ts-expect-error A password is for no URL.
  await client.login('ben', 'secret', {httpMethod: 'GET'});
  // @ts-expect-error No such form.
  await client.call('A', 1, 'b', {}, {encipher: 'rot13'});
  const [outcome] = await client.batch([{api: 'A', version: 1, method: 'b'}]);
  // @ts-expect-error A failure has no value.
  outcome.value;
  const task: Task<{checksum: string}> = await client.startTask('A', 1, 'start');
  const name: string = (await task.result({onProgress: ({percent}) => percent})).checksum;
  const source = {name, size: 1, stream: async function* () { yield new Uint8Array(1); }};
  await client.upload('A', 1, 'c', {file: [file, source]}, {onProgress: ({total}) => total * 2});
  for await (const chunk of await client.download('A', 1, lines[0])) {
    chunk.byteLength;
  }
  error instanceof WebAPIError ? error.code : error instanceof TaskError && error.state.finish;
  throw new TaskError(task.id, await task.status());
}
