// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "tags/TagWriter.h"

namespace {

int writeUsage()
{
    cli::error(QStringLiteral("usage: tarnwell-cli write FILE... [--title T] [--artist A] [--album B]"));
    return cli::usageError;
}

} // namespace

int cli::write(const QStringList &args)
{
    // Several files take the same edit, as the batch tag editor gives them.
    QStringList files;
    TagEdit edit;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        FieldEdit *field = nullptr;
        QString name = arg;
        std::optional<QString> inlineValue;
        if (const qsizetype eq = arg.indexOf(u'='); arg.startsWith(u"--") && eq > 0) {
            name = arg.first(eq);
            inlineValue = arg.sliced(eq + 1);
        }
        if (name == u"--title")
            field = &edit.title;
        else if (name == u"--artist")
            field = &edit.artist;
        else if (name == u"--album")
            field = &edit.album;
        if (field) {
            if (!inlineValue && i + 1 >= args.size())
                return writeUsage();
            // "" removes the tag; an option not given keeps the file's value.
            *field = FieldEdit::set(inlineValue ? *inlineValue : args[++i]);
        } else if (arg.startsWith(u"--")) {
            return writeUsage();
        } else {
            files.append(arg);
        }
    }
    if (files.isEmpty())
        return writeUsage();
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
