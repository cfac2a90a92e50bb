// SPDX-License-Identifier: GPL-3.0-or-later
#include "MprisAdaptors.h"

#include "MprisService.h"

MprisRootAdaptor::MprisRootAdaptor(MprisService *service, QObject *exported)
    : QDBusAbstractAdaptor(exported)
    , m_service(service)
{
}

bool MprisRootAdaptor::canRaise() const
{
    return m_service->canRaise();
}

void MprisRootAdaptor::Raise()
{
    m_service->requestRaise();
}

MprisPlayerAdaptor::MprisPlayerAdaptor(MprisService *service, QObject *exported)
    : QDBusAbstractAdaptor(exported)
    , m_service(service)
{
}

QString MprisPlayerAdaptor::playbackStatus() const
{
    return m_service->playbackStatus();
}

QVariantMap MprisPlayerAdaptor::metadata() const
{
    return m_service->metadata();
}

qlonglong MprisPlayerAdaptor::position() const
{
    return m_service->positionMicroseconds();
}

void MprisPlayerAdaptor::PlayPause()
{
    m_service->requestPlayPause();
}

void MprisPlayerAdaptor::Play()
{
    m_service->requestPlay();
}

void MprisPlayerAdaptor::Pause()
{
    m_service->requestPause();
}

bool MprisPlayerAdaptor::shuffle() const
{
    return m_service->isShuffled();
}

void MprisPlayerAdaptor::setShuffle(bool on)
{
    m_service->requestShuffle(on);
}

void MprisPlayerAdaptor::Next()
{
    m_service->requestNext();
}

void MprisPlayerAdaptor::Previous()
{
    m_service->requestPrevious();
}
