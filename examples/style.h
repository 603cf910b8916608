/* How the pages of the examples look: rules that come before each page's own. */
#ifndef STYLE_H
#define STYLE_H

static const char* const common_style =
    "body{font:16px/1.55 system-ui,sans-serif;color:#22252b;background:#fbfbf9;max-width:820px;margin:2.5em auto;"
    "padding:0 1.5em}h1{font-size:1.9em;line-height:1.2;margin:0 0 .4em}h2{font-size:1.2em;margin:2.2em 0 .3em}"
    "p{max-width:44em;margin:.4em 0 1em}svg{display:block}code{font-size:.93em}"
    "table{border-collapse:collapse;font-variant-numeric:tabular-nums}td,th{padding:3px 16px 3px 0;text-align:right;"
    "font-weight:400}th{color:#5c6370;font-size:13px;border-bottom:1px solid #d8d8d2}"
    "footer{margin:3em 0 1em;padding-top:1em;font-size:13px;color:#5c6370;border-top:1px solid #d8d8d2}";

#endif
