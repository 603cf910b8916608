#include "page.h"

static const char* const common_rules =
    "body{font:16px/1.55 system-ui,sans-serif;color:#22252b;background:#fbfbf9;max-width:820px;margin:2.5em auto;"
    "padding:0 1.5em}h1{font-size:1.9em;line-height:1.2;margin:0 0 .4em}h2{font-size:1.2em;margin:2.2em 0 .3em}"
    "p{max-width:44em;margin:.4em 0 1em}svg{display:block}code{font-size:.93em}"
    "table{border-collapse:collapse;font-variant-numeric:tabular-nums}td,th{padding:3px 16px 3px 0;text-align:right;"
    "font-weight:400}th{color:#5c6370;font-size:13px;border-bottom:1px solid #d8d8d2}"
    "footer{margin:3em 0 1em;padding-top:1em;font-size:13px;color:#5c6370;border-top:1px solid #d8d8d2}";

const char* const figure_rules =
    ".map{width:100%;height:auto;background:#fff;border:1px solid #d8d8d2;border-radius:6px;font:13px "
    "system-ui,sans-serif;margin-bottom:1em}.row{display:flex;flex-wrap:wrap;gap:20px;margin-bottom:1em}figure{margin:"
    "0;width:390px}"
    "figcaption{font-size:13px;color:#5c6370;line-height:1.35;margin-top:4px}img{display:block;width:390px;"
    "image-rendering:pixelated}";

FILE* open_page(const char* path, const char* title, const char* rules, const char* more_rules)
{
    FILE* out = fopen(path, "w");
    if (out != NULL)
        fprintf(out,
                "<!doctype html><html lang=en><meta charset=utf-8><meta name=viewport content='width=device-width'>"
                "<title>%s</title><style>%s%s%s</style>\n<h1>%s</h1>\n",
                title, common_rules, rules, more_rules, title);
    return out;
}

int close_page(FILE* out)
{
    fprintf(out, "</html>\n");
    const int broken = ferror(out);
    return fclose(out) != 0 || broken ? -1 : 0;
}

void text(FILE* out, const char* words)
{
    for (; *words; ++words)
        if (*words == '<') fputs("&lt;", out);
        else if (*words == '&') fputs("&amp;", out);
        else fputc(*words, out);
}
