/* Every family of the utility library, used from C through its header. */
#include "liblst/liblst.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static int failures = 0;

static void check(int holds, const char* what)
{
    if (!holds) {
        fprintf(stderr, "from_c: %s\n", what);
        ++failures;
    }
}

int main(void)
{
    void** rubbish = NULL;
    char** list = lstSplitStr(',', "a,b");
    check(lstPush(&list, "c") == 2 && lstSize(list) == 3, "lists");

    char** map = NULL;
    check(mapPush(&map, "key", "value") == 1, "maps");
    check(strcmp(getConfigValue(map, "key", ""), "value") == 0, "configuration");

    char* text = ptReplaceStr(" one two ", "two", "three");
    check(trimStr(text) == 0 && strcmp(text, "one three") == 0, "strings");
    pCollect(&rubbish, text);

    char path[] = "liblst.XXXXXX";
    const int fd = mkstemp(path);
    check(writeToFileFormat(fd, "%s\n", text) == 0, "files");
    close(fd);
    char* line = ptGetFileRowFormat("%s", path);
    check(line != NULL && strcmp(line, text) == 0, "lines");
    pCollect(&rubbish, line);
    const int nothing = open("/dev/null", O_RDONLY);
    while (readFileRow(&line, nothing) > 0) {
        free(line);
    }

    char* output = NULL;
    check(getShellContentFormat(&output, "cat %s", path) == 0, "shell");
    pCollect(&rubbish, output);
    const int lock = lockF(path);
    check(lock >= 0, "locks");
    ulockF(path, lock);

    close(nothing);
    unlink(path);
    lstFree(list);
    lstFree(map);
    pClean(rubbish);
    return failures;
}
