// SPDX-License-Identifier: MIT
// parse_only FILE...: reads and parses JSON files, and does nothing with them.
#include <json-parser/json.h>
#include <stdio.h>
#include <stdlib.h>

static int parse(const char *name)
{
    FILE *file = fopen(name, "r");
    if (file == NULL)
        return 1;
    fseek(file, 0, SEEK_END);
    const size_t size = (size_t)ftell(file);
    rewind(file);
    char *text = malloc(size);
    if (text == NULL || fread(text, 1, size, file) != size)
        return 1;
    fclose(file);
    json_settings settings = {0};
    json_value *root = json_parse_ex(&settings, text, size, NULL);
    free(text);
    if (root == NULL)
        return 1;
    json_value_free(root);
    return 0;
}

int main(int argc, char **argv)
{
    for (int i = 1; i < argc; i++)
        if (parse(argv[i]) != 0)
            return 1;
    return 0;
}
