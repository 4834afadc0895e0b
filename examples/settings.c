/* settings FILE KEY [DEFAULT]: one setting of a configuration file, read under the file's lock. */
#include <liblst/liblst.h>
#include <stdio.h>
#include <string.h>

int main(int argc, char** argv)
{
    if (argc < 3 || argc > 4) {
        fprintf(stderr, "usage: settings FILE KEY [DEFAULT]\n");
        return 2;
    }
    const int lock = lockF(argv[1]);
    if (lock < 0) { /* nothing to release: ulockF() would remove another's lock file */
        perror(argv[1]);
        return 1;
    }
    char** settings = readConfig(argv[1]);
    ulockF(argv[1], lock);

    const char* value = getConfigValue(settings, argv[2], argc == 4 ? argv[3] : NULL);
    if (value != NULL) {
        printf("%s\n", value); /* points into `settings` */
    }
    const int status = value != NULL ? 0 : 1;
    lstFree(settings);
    return status;
}
