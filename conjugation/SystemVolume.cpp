#include "SystemVolume.h"

#include <alsa/asoundlib.h>

#include <memory>
#include <mutex>

namespace norvella::SystemVolume {

namespace {
void ignoreAlsaError(const char *, int, const char *, int, const char *, ...) {}

struct MixerCloser
{
    void operator()(snd_mixer_t *mixer) const { snd_mixer_close(mixer); }
};

std::optional<double> volumeOf(snd_mixer_elem_t *element)
{
    long minimum = 0;
    long maximum = 0;
    if (snd_mixer_selem_get_playback_volume_range(element, &minimum, &maximum) < 0 || maximum <= minimum)
        return std::nullopt;
    const auto channel = snd_mixer_selem_is_playback_mono(element) ? SND_MIXER_SCHN_MONO
                                                                   : SND_MIXER_SCHN_FRONT_LEFT;
    if (snd_mixer_selem_has_playback_switch(element)) {
        int on = 1;
        if (snd_mixer_selem_get_playback_switch(element, channel, &on) == 0 && !on)
            return 0.0;
    }
    long value = 0;
    if (snd_mixer_selem_get_playback_volume(element, channel, &value) < 0)
        return std::nullopt;
    return double(value - minimum) / double(maximum - minimum);
}
} // namespace

void silenceAlsaErrors()
{
    static std::once_flag once;
    std::call_once(once, [] { snd_lib_error_set_handler(ignoreAlsaError); });
}

std::optional<double> defaultOutputVolume(const QString &mixerName)
{
    silenceAlsaErrors();
    snd_mixer_t *raw = nullptr;
    if (snd_mixer_open(&raw, 0) < 0)
        return std::nullopt;
    std::unique_ptr<snd_mixer_t, MixerCloser> mixer(raw);
    const QByteArray name = mixerName.toUtf8();
    if (snd_mixer_attach(raw, name.constData()) < 0 || snd_mixer_selem_register(raw, nullptr, nullptr) < 0
        || snd_mixer_load(raw) < 0)
        return std::nullopt;

    // The master control when there is one, else the first playback control.
    snd_mixer_elem_t *chosen = nullptr;
    for (snd_mixer_elem_t *element = snd_mixer_first_elem(raw); element; element = snd_mixer_elem_next(element)) {
        if (!snd_mixer_selem_is_active(element) || !snd_mixer_selem_has_playback_volume(element))
            continue;
        const char *elementName = snd_mixer_selem_get_name(element);
        if (qstrcmp(elementName, "Master") == 0) {
            chosen = element;
            break;
        }
        if (!chosen || qstrcmp(elementName, "PCM") == 0)
            chosen = element;
    }
    return chosen ? volumeOf(chosen) : std::nullopt;
}

} // namespace norvella::SystemVolume
