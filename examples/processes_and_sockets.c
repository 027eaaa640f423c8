/* Let a child answer over a connection: listen, connect, hand the connection over, wait for the end. */
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <zorvcrt.h>

static int fail(const char *what, int32_t error) {
  fprintf(stderr, "%s: %s\n", what, strerror(error));
  return 1;
}

int main(void) {
  int32_t listener, client, server, port, error, code = -1;
  uint32_t child;
  struct timeval limit = {5, 0};
  char answer[64] = "";

  signal(SIGPIPE, SIG_IGN); /* a peer that is gone shows as EPIPE, not as our end */
  if ((error = ZfxCreateDynamicListenSocket(&listener, &port)) != 0) return fail("listen", error);
  if ((error = ZfxCreateClientSocket("127.0.0.1", port, &client)) != 0) return fail("connect", error);
  server = ZfxAccept(listener, NULL, NULL);

  /* The child's standard input and output are the connection; no other descriptor of ours reaches it. */
  error = ZfxExecPR("sh -c 'read name; echo hello, $name; exit 7'", 0, server, server, -1, &child);
  ZfxCloseSocket(server);
  if (error != 0) return fail("exec", error);

  ZfxSocketPrintf(client, "%s\n", "world");
  if (ZfxSocketReadSelect(client, &limit, &error) == 1) {
    int32_t count = ZfxSocketRead(client, answer, sizeof answer - 1);
    printf("answer: %.*s", count > 0 ? (int)count : 0, answer);
  }
  if (ZfxWaitProcess(child, 5000, &code) != 1) { /* at most 5000 sleeps of a millisecond */
    ZfxKillProcess(child);
    ZfxWaitProcess(child, -1, &code);
  }
  printf("exit code: %d\n", (int)code);
  printf("in one call: %d\n", (int)ZfxExec("sh -c 'exit 3'", 1)); /* the raw status: 3 * 256 */
  ZfxCloseSocket(client);
  return ZfxCloseSocket(listener);
}
