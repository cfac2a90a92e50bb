// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "tags/TagWriter.h"

int cli::write(const Arguments &args)
{
    if (args.operands.isEmpty())
        return badUsage("write", QStringLiteral("give at least one file"));
    // Several files take the same edit, as the batch tag editor gives them.
    TagEdit edit;
    const std::pair<const char *, FieldEdit *> fields[]
        = { { "--title", &edit.title }, { "--artist", &edit.artist }, { "--album", &edit.album } };
    for (const auto &[option, field] : fields) {
        // "" removes the tag; an option not given keeps the file's value.
        if (const std::optional<QString> value = args.value(option))
            *field = FieldEdit::set(textArgument(*value));
    }
    const QStringList files = absolutePaths(args.operands);
    const QList<SaveResult> results = saveTags(files, edit);
    int code = 0;
    for (qsizetype i = 0; i < results.size(); ++i) {
        if (!results[i]) {
            error(results[i].message(files[i]));
            code = 1;
        }
    }
    return code;
}
