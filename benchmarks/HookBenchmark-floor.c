/* The least that a hook's process can do: read the payload, connect, write one line, read the reply, exit.
   usage: HookBenchmark-floor SOCKET LINE */
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

int main(int count, char** values)
{
    static char buffer[65536];
    struct sockaddr_un address = {.sun_family = AF_UNIX};
    if (count != 3 || strlen(values[1]) >= sizeof address.sun_path)
        return 2;
    while (read(STDIN_FILENO, buffer, sizeof buffer) > 0)
        continue;
    strcpy(address.sun_path, values[1]);
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    if (connect(fd, (struct sockaddr*)&address, sizeof address) != 0)
        return 1;
    if (write(fd, values[2], strlen(values[2])) < 0 || write(fd, "\n", 1) < 0)
        return 1;
    return read(fd, buffer, sizeof buffer) > 0 ? 0 : 1;
}
