// A client of the web APIs, for browsers and Node 18 or later, without dependencies.
// docs/client.md is a tour; webapi.d.mts has the types.

export {WebAPIClient} from './webapi/client.mjs';
export {Download} from './webapi/download.mjs';
export {EncipherError, TaskError, TransportError, WebAPIError} from './webapi/errors.mjs';
export {Task} from './webapi/task.mjs';
